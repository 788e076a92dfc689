// SPDX-License-Identifier: MIT
#include "QUORScalarBar.h"

#include <QString>

#include <vtkDoubleArray.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkObjectFactory.h>
#include <vtkScalarBarActorInternal.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>
#include <vtkTextRenderer.h>

#include <algorithm>
#include <cmath>

namespace {

/// Pixels between labels at the least, and labels at the most.
constexpr double LABEL_PITCH = 14.0;
constexpr double MOST_LABELS = 21.0;
/// Of the largest step of a scale to its smallest, from which on the scale is uneven.
constexpr double UNEVEN = 60.0;
/// Pixels of a small picture's bar: a step of less than one would not be seen.
constexpr double SMALL_BAR = 200.0;
constexpr double ROUNDING = 1e-9;
/// What the labels of an uneven scale have room for beside the bar: 0.1, 200.
constexpr int LONGEST_LABEL = 3;

/// At which labels are drawn, and what counts as drawn of 255.
constexpr int DOTS_PER_INCH = 72;
constexpr int HALF_COVERED = 100;

constexpr double STEPS[] = {1.0, 2.0, 5.0};

/// The least round step, 1, 2 or 5 times a power of ten, that is not less than the given one.
double roundStep(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double step : STEPS) {
        if (step * power >= least * (1.0 - ROUNDING)) {
            return step * power;
        }
    }
    return 10.0 * power;
}

QString textOf(double value) {
    return QString::number(value, 'g', 6);
}

/// How far over a text's position the middle of its digits lies, in pixels. A text's own box is higher than
/// they are: it has room for what reaches below the line.
double findMiddle(vtkTextProperty* property) {
    vtkNew<vtkImageData> picture;
    int dimensions[2] = {0, 0};
    if (!vtkTextRenderer::GetInstance()->RenderString(property, "0", picture, dimensions, DOTS_PER_INCH)) {
        return 0.0;
    }
    const int* extent = picture->GetExtent();
    int lowest = extent[3];
    int highest = extent[2];
    for (int y = extent[2]; y <= extent[3]; ++y) {
        for (int x = extent[0]; x <= extent[1]; ++x) {
            if (static_cast<unsigned char*>(picture->GetScalarPointer(x, y, 0))[3] > HALF_COVERED) {
                lowest = std::min(lowest, y);
                highest = std::max(highest, y);
            }
        }
    }
    return 0.5 * (lowest + highest + 1);
}

} // namespace

vtkStandardNewMacro(QUORScalarBar)

QUORScalarBar::QUORScalarBar() {
    this->UseCustomLabelsOn();
}

QUORScalarBar::~QUORScalarBar() = default;

void QUORScalarBar::SetSeams(std::vector<double> seams) {
    Seams = std::move(seams);
    Uneven = IsUneven(Seams);
    this->Modified();
}

bool QUORScalarBar::IsUneven(const std::vector<double>& seams) {
    double least = HUGE_VAL;
    double most = 0.0;
    for (std::size_t i = 1; i < seams.size(); ++i) {
        least = std::min(least, seams[i] - seams[i - 1]);
        most = std::max(most, seams[i] - seams[i - 1]);
    }
    const double count = double(seams.size()) - 1.0;
    const double range = count > 0.0 ? seams.back() - seams.front() : 0.0;
    const bool isTooNarrow = SMALL_BAR * least < range && 2.0 * count * least < range;
    return least > 0.0 && (most > UNEVEN * least || isTooNarrow);
}

double QUORScalarBar::FindHeight(double value) const {
    const double count = double(Seams.size() - 1);
    if (!Uneven) {
        return (value - Seams.front()) / (Seams.back() - Seams.front());
    }
    const auto above = std::upper_bound(Seams.begin() + 1, Seams.end() - 1, value);
    const double low = *(above - 1);
    return (double(above - Seams.begin() - 1) + (value - low) / (*above - low)) / count;
}

std::vector<double> QUORScalarBar::FindLabels(int pixels) const {
    const double low = Seams.front();
    const double high = Seams.back();
    const double room = std::clamp(pixels / LABEL_PITCH, 1.0, MOST_LABELS);
    std::vector<double> labels;
    if (!(high > low)) {
        return labels;
    }
    if (!Uneven) {
        const double step = roundStep((high - low) / room);
        for (double k = std::ceil(low / step - ROUNDING); k * step <= high + ROUNDING * step; ++k) {
            labels.push_back(k * step);
        }
        return labels;
    }
    const auto add = [&](double value) {
        const bool hasRoom =
            labels.empty() || (FindHeight(value) - FindHeight(labels.back())) * pixels >= LABEL_PITCH;
        if (value >= low && value <= high && hasRoom && textOf(value).size() <= LONGEST_LABEL) {
            labels.push_back(value);
        }
    };
    if (low < 0.0) {
        std::for_each(Seams.begin(), Seams.end(), add);
        return labels;
    }
    // 0.1, 0.2, 0.5, 1, 2, 5 and so on, where one has room over the one before.
    const double first = std::max(low, Seams[1]);
    for (double power = std::pow(10.0, std::floor(std::log10(std::max(first, ROUNDING)))); power <= high;
         power *= 10.0) {
        for (const double step : STEPS) {
            add(step * power);
        }
    }
    return labels;
}

void QUORScalarBar::LayoutTicks() {
    Labels = FindLabels(this->P->ScalarBarBox.Size[1]);
    vtkNew<vtkDoubleArray> places;
    for (const double label : Labels) {
        places->InsertNextValue(Uneven ? FindHeight(label) * double(Seams.size() - 1) : label);
    }
    // No notification: that would have the layout made again.
    vtkDoubleArray* const before = this->CustomLabels;
    this->CustomLabels = places;
    this->Superclass::LayoutTicks();
    this->CustomLabels = before;
    for (std::size_t i = 0; Uneven && i < std::min(Labels.size(), this->P->TextActors.size()); ++i) {
        this->P->TextActors[i]->SetInput(textOf(Labels[i]).toLatin1().constData());
    }
}

void QUORScalarBar::ConfigureTicks() {
    this->Superclass::ConfigureTicks();
    if (this->P->TextActors.empty()) {
        return;
    }
    const double middle = findMiddle(this->P->TextActors[0]->GetTextProperty());
    const vtkScalarBarBox& box = this->P->ScalarBarBox;
    for (std::size_t i = 0; i < std::min(Labels.size(), this->P->TextActors.size()); ++i) {
        vtkTextActor* text = this->P->TextActors[i];
        text->SetPosition(text->GetPosition()[0], box.Posn[1] + FindHeight(Labels[i]) * box.Size[1] - middle);
    }
}
