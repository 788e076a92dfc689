// SPDX-License-Identifier: MIT
#pragma once

#include <vtkScalarBarActor.h>

#include <vector>

/// A colour bar whose labels stand on round values, each at the height of its value, as many as its height in
/// pixels has room for. A scale with very uneven steps, such as one of rain rates, has bands of equal height
/// in place of heights that go with the value: its low steps would else be thinner than a line.
class QUORScalarBar : public vtkScalarBarActor {
public:
    static QUORScalarBar* New();
    vtkTypeMacro(QUORScalarBar, vtkScalarBarActor)

    /// Ascending values, at least two, that the ends and the bands of the bar stand for. The lookup table of
    /// an even scale spans them; that of an uneven one spans their numbers from 0.
    void SetSeams(std::vector<double> seams);
    /// Whether the bands of such a scale are of equal height.
    static bool IsUneven(const std::vector<double>& seams);
    /// The values that are labelled on a bar of so many pixels, ascending.
    std::vector<double> FindLabels(int pixels) const;
    /// From 0 at the lower end to 1 at the upper one.
    double FindHeight(double value) const;

    QUORScalarBar(const QUORScalarBar&) = delete;
    QUORScalarBar& operator=(const QUORScalarBar&) = delete;

protected:
    QUORScalarBar();
    ~QUORScalarBar() override;
    void LayoutTicks() override;
    /// By then the bar has got its place: labels at its ends take some of its length.
    void ConfigureTicks() override;

private:
    std::vector<double> Seams{0.0, 1.0};
    bool Uneven = false;
    /// Those that the bar has now.
    std::vector<double> Labels;
};
