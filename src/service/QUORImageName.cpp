// SPDX-License-Identifier: MIT
#include "QUORImageName.h"

QString QUORImageName::clean(QString name) {
    for (QChar& c : name) {
        if (c == QLatin1Char('/') || c.category() == QChar::Other_Control) {
            c = QLatin1Char('_');
        }
    }
    name.replace(QStringLiteral(".."), QStringLiteral("__"));
    if (name.startsWith(QLatin1Char('.'))) {
        name[0] = QLatin1Char('_');
    }
    return name;
}
