// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Copies of the user's settings files, changed as the command line asks. Those who draw read them in place
/// of the user's, and what they store about a product that they have not seen before goes into the copies.
class RenderSettings {
public:
    /// Over copies in that folder, which may be empty.
    explicit RenderSettings(const QString& folder) : _folder(folder) {}

    /// Copies the settings of this user. Empty, or which file could not be copied and why.
    QString copyUsers() const;
    /// Copies these copies into another folder.
    QString copyTo(const QString& folder) const;
    /// "KEY=VALUE" or "GROUP/KEY=VALUE", as the settings guide names them. Empty, or what is wrong with it.
    QString set(const QString& assignment) const;
    /// From here on this process reads these settings. Before any settings are read; main thread only.
    void apply() const;

private:
    QString _folder;
};
