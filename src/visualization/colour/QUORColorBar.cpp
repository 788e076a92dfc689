// SPDX-License-Identifier: MIT
#include "QUORColorBar.h"

#include "QUORColormap.h"

#include <vtkColorTransferFunction.h>
#include <vtkNew.h>
#include <vtkScalarBarActor.h>

#include <array>

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

} // namespace

vtkSmartPointer<vtkScalarBarActor> QUORColorBar::make(const QUORColormap& colormap) {
    vtkSmartPointer<vtkScalarBarActor> bar = colormap.makeBar(colormap.getDataUnits(), 0.1, 0.05, 0.8, 0.95);
    showLastColor(bar, colormap);
    // One swatch a colour would place those of uneven steps wrong, or leave them out.
    bar->SetMaximumNumberOfColors(SWATCHES);
    // Else the title touches the first label in small pictures.
    bar->SetVerticalTitleSeparation(8);
    return bar;
}
