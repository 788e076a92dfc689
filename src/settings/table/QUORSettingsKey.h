// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <limits>
#include <string_view>

/// One key of a settings file: where it stands, what it may hold and what it means. A constant of the table.
struct QUORSettingsKey {
    enum class File { Main, Background, Colors, Styles, Landmarks };
    enum class Type {
        Flag,
        Whole,
        Number,
        Text,
        Choice,    ///< one of the choices, exactly so
        Directory, ///< absolute, or "~" and what follows
        Color,     ///< three numbers under the name and "/r", "/g", "/b"
    };
    /// What becomes of a value outside the range.
    enum class Beyond {
        Refused, ///< the default counts
        Limited, ///< the nearest end counts
        Kept,    ///< it counts, although it makes no sense
    };
    enum class Use {
        Service,
        Client, ///< read and written by clients alone
    };

    File file = File::Main;
    /// The section; "*" stands for a part that differs, as the product in "PRODUCT * *".
    std::string_view group;
    /// Of an element: the array that it belongs to.
    std::string_view array;
    /// Below the group, or below an element of the array. "*" stands for a number.
    std::string_view name;
    Type type = Type::Text;
    /// The default: of a flag 0 or 1, of a colour its three components.
    std::array<double, 3> number{};
    std::string_view text;
    /// In place of a default that is no constant: what it is.
    std::string_view computed;
    double minimum = -std::numeric_limits<double>::max();
    double maximum = std::numeric_limits<double>::max();
    Beyond beyond = Beyond::Refused;
    /// Separated by "|"; of a name with "*" the numbers that it may stand for.
    std::string_view choices;
    /// A clause for the settings guide and the tools, with the unit.
    std::string_view meaning;
    Use use = Use::Service;

    constexpr bool flag() const { return number[0] != 0.0; }
    constexpr int whole() const { return static_cast<int>(number[0]); }
    QString defaultText() const {
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    QString nameText() const { return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())); }
};
