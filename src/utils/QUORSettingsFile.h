// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What the settings layer does not tell about its files: why one cannot be read, which line it does not
/// understand, and whether somebody is saving it. Any thread may call.
namespace QUORSettingsFile {

/// The whole content, empty for no file; nothing, with the reason in `error`, when a part of it could not
/// be read, and for what the settings layer must never open: a pipe keeps its reader waiting for ever, and
/// values nested deeply enough end the process. Asked of the system, because a folder that may not be
/// searched makes a file look as if it were missing.
std::optional<QByteArray> read(const QString& fileName, QString& error);

/// The settings layer keeps what it parsed of files that were closed, and takes a file of equal size and time
/// for the same. After this it reads every file anew that nobody has open.
void forgetParsed();

/// Whether any key with its value stands in the content.
bool hasKeys(const QByteArray& content);
/// Whether a key stands in the section of that group; the general group also goes by the names that the
/// settings layer gives it.
bool hasGroup(const QByteArray& content, const QString& group);

/// Whether another process has the file open for writing. Known only of files that belong to this user, or
/// to anybody where the process has the right to take leases.
bool isBeingWritten(const QString& fileName);

/// Waits while a save in place is in progress: until a second after its last sign of life, and for three
/// seconds at most, after which nobody waits for the file until its save has ended.
void awaitSave(const QString& fileName);

/// The number, from 1, of the first line that is no comment (";" or "#"), section or key with its value, or
/// that swallows the next one, as behind a quotation mark which nobody closed; 0 when there is none. A list
/// may go on behind a backslash.
int findBadLine(const QByteArray& content);

} // namespace QUORSettingsFile
