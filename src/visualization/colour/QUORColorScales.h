// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPaletteFile.h"

#include <QList>
#include <QString>

/// The scales of the colours file, user's and packaged, and changes to the user's file. A new scale brings a
/// colour set of its own; a change of a packaged scale is stored in the user's file. Used by one thread.
namespace QUORColorScales {

struct Scale {
    int id = 0;
    QString name;
    int dataIndex = 0; ///< its colour group
    int setId = 0;
    QString units;
    QList<double> seams;
    bool isUser = false; ///< the user's file holds something of it
};

/// By number.
QList<Scale> list();
/// The colour group of a configuration ("Z", "V", "W" or "R"); 0 when the file maps none.
int findDataIndex(const QString& configuration);
/// A data type of a colour group, by its raw code; -1 for none.
int findDataType(int dataIndex);

/// Where changes are stored.
QString getUserFile();
/// False, with an error line in the log, when it could not be stored. The palette has values.
bool add(const QString& name, int dataIndex, const QString& units, const QUORPaletteFile& palette);
bool rename(int id, const QString& name);
/// Only a scale that the user's file holds can go; its colour set goes when no other scale has it.
bool remove(int id);

} // namespace QUORColorScales
