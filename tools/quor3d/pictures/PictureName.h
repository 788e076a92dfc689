// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// What the name of a picture says: site_configuration_time, and behind a further "_" what sets a further
/// picture of the same scene apart.
struct PictureName {
    QString site;
    QString configuration;
    /// Twelve digits: year, month, day, hour, minute and second, two of each. As text they are in order.
    QString time;
    /// Empty for the first picture of a scene.
    QString view;

    /// Of a file name without its folder. Empty for a name of another kind and for a file that is no picture
    /// (TIFF, PNG, JPEG or WebP, by its ending).
    static std::optional<PictureName> parse(const QString& fileName);
};
