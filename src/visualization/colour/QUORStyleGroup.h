// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <span>
#include <string_view>
#include <vector>

/// The style values of one component: a table of keys with defaults, read from the component's "_DAY" or
/// "_NIGHT" group of the styles file. The file is only read; a missing file, group or key gives the
/// defaults. What a hand-written file may hold is made safe here: colours and opacities are finite and
/// within 0..1, and a size that is 0, negative or absurd is its default, with a warning that names it.
///
/// A plain value of its owner's thread; each load opens the file anew.
class QUORStyleGroup {
public:
    using Color = std::array<double, 3>;

    /// What a key holds, and with it the range that is accepted.
    enum class Kind {
        Color,     ///< three keys, ending in "/r", "/g" and "/b"; clamped to 0..1
        Opacity,   ///< clamped to 0..1
        LineWidth, ///< pixels, up to 64
        HaloWidth, ///< pixels, 0 for none to 16
        Length,    ///< scene metres, up to 1,000,000
        FontSize,  ///< points, 1 to 200
    };

    /// One row of a component's table. A single value stands first in `fallback`.
    struct Row {
        std::string_view key;
        Kind kind;
        Color fallback;
    };

    /// Application name of the styles file.
    static const QString FILE_NAME;

    /// Holds the defaults until `load`. The table is static data of the component.
    QUORStyleGroup(const char* component, std::span<const Row> rows);

    void load(bool night);

    /// A key that the table does not hold is a programming error, here and below.
    const Color& color(std::string_view key) const;
    /// Any kind but a colour.
    double number(std::string_view key) const;

private:
    std::size_t indexOf(std::string_view key) const;

    const char* _component;
    std::span<const Row> _rows;
    std::vector<Color> _values;
};
