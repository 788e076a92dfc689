// SPDX-License-Identifier: MIT
#include "QUORColorBar.h"

#include "QUORColormap.h"
#include "QUORScalarBar.h"

#include <vtkColorTransferFunction.h>
#include <vtkNew.h>
#include <vtkScalarBarActor.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int SWATCHES = 2048;

/// A map has a node at the lower seam of each colour, so that its range ends where the last colour begins:
/// the bar's range goes on to that colour's upper seam, or its labels would not fit its colours.
void showLastColor(vtkScalarBarActor* bar, const QUORColormap& colormap) {
    const QVector<double>& seams = colormap.getScale();
    const int last = colormap.getNSeamsInUse() - 1;
    vtkColorTransferFunction* map = colormap.getMap();
    if (map == nullptr || last < 1 || last >= seams.size() || seams[last] <= map->GetRange()[1]) {
        return;
    }
    vtkNew<vtkColorTransferFunction> whole;
    whole->DeepCopy(map);
    std::array<double, 6> node{};
    map->GetNodeValue(map->GetSize() - 1, node.data());
    whole->AddRGBPoint(seams[last], node[1], node[2], node[3], node[4], node[5]);
    bar->SetLookupTable(whole);
}

/// The map over the numbers of its seams in place of their values.
vtkSmartPointer<vtkColorTransferFunction> makeBands(vtkColorTransferFunction& map,
                                                    const std::vector<double>& seams) {
    auto bands = vtkSmartPointer<vtkColorTransferFunction>::New();
    bands->SetColorSpaceToRGB();
    std::array<double, 6> node{};
    for (int i = 0; i < std::min<int>(map.GetSize(), int(seams.size())); ++i) {
        map.GetNodeValue(i, node.data());
        bands->AddRGBPoint(i, node[1], node[2], node[3], node[4], node[5]);
    }
    bands->AddRGBPoint(double(seams.size() - 1), node[1], node[2], node[3], node[4], node[5]);
    return bands;
}

/// Ascending, at least two; empty where the map has none for labels to go by.
std::vector<double> findSeams(const QUORColormap& colormap) {
    const QVector<double>& scale = colormap.getScale();
    const int count = std::min<int>(colormap.getNSeamsInUse(), int(scale.size()));
    const std::vector<double> seams(scale.cbegin(), scale.cbegin() + std::max(count, 0));
    if (count < 2 || !std::is_sorted(seams.begin(), seams.end()) || !(seams.front() < seams.back())) {
        return {};
    }
    return seams;
}

void setScale(QUORScalarBar& bar, const QUORColormap& colormap) {
    const std::vector<double> seams = findSeams(colormap);
    if (seams.empty()) {
        bar.UseCustomLabelsOff();
        return;
    }
    bar.SetSeams(seams);
    if (QUORScalarBar::IsUneven(seams)) {
        bar.SetLookupTable(makeBands(*colormap.getMap(), seams));
    }
}

} // namespace

vtkSmartPointer<vtkScalarBarActor> QUORColorBar::make(const QUORColormap& colormap) {
    auto bar = vtkSmartPointer<QUORScalarBar>::New();
    colormap.dressBar(*bar, colormap.getDataUnits(), 0.1, 0.05, 0.8, 0.95);
    showLastColor(bar, colormap);
    setScale(*bar, colormap);
    // One swatch a colour would place those of uneven steps wrong, or leave them out.
    bar->SetMaximumNumberOfColors(SWATCHES);
    // Else the title touches the first label in small pictures.
    bar->SetVerticalTitleSeparation(8);
    return bar;
}

QList<double> QUORColorBar::pickValues(const QUORColormap& colormap, int pixels) {
    const std::vector<double> seams = findSeams(colormap);
    if (seams.empty()) {
        return {};
    }
    vtkNew<QUORScalarBar> bar;
    bar->SetSeams(seams);
    const std::vector<double> labels = bar->FindLabels(pixels);
    return {labels.cbegin(), labels.cend()};
}
