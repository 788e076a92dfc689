// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsKey.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Finds rows of the table by what stands in a file or was typed by hand. The groups of the general settings
/// go by "GENERAL", however the file writes it.
namespace QUORSettingsSearch {

using File = QUORSettingsKey::File;

/// A key as somebody named it.
struct Target {
    const QUORSettingsKey* row = nullptr; ///< null for the size of an array
    File file = File::Main;
    QString group;
    QString key; ///< with array and number
    QString path() const { return group + QLatin1Char('/') + key; }
};

/// "GENERAL" for its other spellings, any other group as it is.
QString toGroup(const QString& section);
bool isGroup(File file, const QString& group);
/// The row of a key, or of the array whose size it is; a null row for a size; nothing for an unknown key.
std::optional<Target> find(File file, const QString& group, const QString& key);
/// All files' keys that a text names: "GROUP/KEY", or a key alone. Of several groups that have it the
/// service's come before the clients'. Empty when there is none.
QList<Target> findNamed(const QString& text);

/// The most similar known group or key, or one that goes by another name elsewhere; empty when none is near.
QString nearestGroup(File file, const QString& group);
QString nearestKey(File file, const QString& group, const QString& key);
/// The keys of a group, an array's as "surface/N/isovalue".
QStringList keysOf(File file, const QString& group);
/// Other places where a key of that name is known, as "[BACKGROUND] of quor3dd.conf".
QStringList otherPlaces(File file, const QString& group, const QString& key);
/// Of several texts the most similar one, or nothing when none is near.
QString nearest(const QString& text, const QStringList& known);

/// Such as "QUOR3D.conf".
QString fileName(File file);

} // namespace QUORSettingsSearch
