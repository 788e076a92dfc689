// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsSearch.h"

#include <QList>
#include <QString>

/// Which values count, and where they come from: the user's file, the packaged one or the program. Of the
/// user of this process.
namespace QUORSettingsInForce {

enum class Source { User, Packaged, BuiltIn };

struct Value {
    QUORSettingsSearch::Target target;
    QString text;
    Source source = Source::BuiltIn;
    QString file; ///< empty for a built-in one
    int line = 0;
    /// A stored text that does not count as it stands, and why.
    QString rejected;
    QString problem;
};

/// Where settings of that kind stand, the user's file first, whether it exists or not.
QStringList getFiles(QUORSettingsKey::File file);

Value find(const QUORSettingsSearch::Target& target);
/// Every key of the service by file and group, arrays with the elements that are stored; only those of the
/// group when it has a name.
QList<Value> findAll(const QString& group);

} // namespace QUORSettingsInForce
