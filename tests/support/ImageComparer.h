// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>

#include <gtest/gtest.h>

/// Compares rendered pictures with the pictures in tests/data/baseline, by structure and by colour, with a
/// tolerance for what another release of the drawing library may change: edge pixels, shades, hinting.
namespace ImageComparer {

/// How far two pictures of the same size lie apart.
struct Distance {
    /// Of the brightness, over the windows of both: 1 is the same structure, 0 has nothing in common.
    double structure = 0.0;
    /// The least structure of any single window: what is missing in one place shows here.
    double worstWindow = 0.0;
    /// Mean difference of a sample after light smoothing, 0 to 255.
    double colour = 255.0;

    bool isSame() const { return structure >= 0.97 && worstWindow >= 0.3 && colour <= 3.0; }
};

/// Pictures of different sizes have nothing in common.
Distance compare(const QImage& a, const QImage& b);

/// Success when the picture is the same as the baseline of that name. A missing baseline fails; a failure
/// leaves <name>-result.png, -baseline.png and -difference.png in the folder of failed pictures.
testing::AssertionResult matchesBaseline(const QImage& picture, const QString& name);

QString baselinePath(const QString& name);
QString failurePath(const QString& name);

} // namespace ImageComparer
