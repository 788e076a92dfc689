// SPDX-License-Identifier: MIT
#pragma once

#include <QSet>
#include <QString>

/// Says in the log what `quor3d check` says about the settings files: unknown keys and groups, values that do
/// not count, presets that do not exist. One error line for each that costs or falsifies an image, again when
/// it has been away. Files that have not changed are not looked at again, and damaged ones not at all: of
/// those the last good state is in force, and was looked at. Used on the main thread.
class QUORSettingsWatch {
public:
    void look();

private:
    QString _stamp; ///< of all settings files
    QSet<QString> _lines;
};
