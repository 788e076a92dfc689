// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What the settings layer does not tell about its files: why one cannot be read and which line it does
/// not understand. Any thread may call.
namespace QUORSettingsFile {

/// Why the file cannot be read; empty when it can, and when there is no file. Asked of the system, because
/// a folder that may not be searched makes a file look as if it were missing, and a pipe in the place of a
/// file keeps its reader waiting for ever.
QString findAccessError(const QString& fileName);

/// The whole content, empty for no file; nothing, with the reason in `error`, when a part of it could not
/// be read.
std::optional<QByteArray> read(const QString& fileName, QString& error);

/// The number, from 1, of the first line that is no comment (";" or "#"), section or key with its value; 0
/// when there is none. A value may go on over lines, in quotation marks or behind a backslash.
int findBadLine(const QByteArray& content);

/// Without what the settings layer takes for a format error although it reads the rest: comments with "#"
/// and a byte order mark.
QByteArray withoutOddities(const QByteArray& content);

} // namespace QUORSettingsFile
