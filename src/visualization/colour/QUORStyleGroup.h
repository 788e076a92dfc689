// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsKey.h"

#include <QString>

#include <array>
#include <span>
#include <string_view>
#include <vector>

/// The style values of one component: the keys that the table of settings has for it, read from the
/// component's "_DAY" or "_NIGHT" group of the styles file. The file is only read; a missing file, group or
/// key gives the defaults. What a hand-written file may hold is made safe here: colours and opacities are
/// finite and within 0..1, and a size that is 0, negative or absurd is its default, with a warning that
/// names it.
///
/// A plain value of its owner's thread; each load opens the file anew.
class QUORStyleGroup {
public:
    using Color = std::array<double, 3>;

    /// Application name of the styles file.
    static const QString FILE_NAME;

    /// Holds the defaults until `load`. A component that the table does not hold is a programming error.
    explicit QUORStyleGroup(std::string_view component);

    void load(bool night);

    /// A key that the table does not hold is a programming error, here and below.
    const Color& color(std::string_view key) const;
    /// Any kind but a colour.
    double number(std::string_view key) const;

private:
    std::size_t indexOf(std::string_view key) const;

    std::span<const QUORSettingsKey> _rows;
    std::vector<Color> _values;
};
