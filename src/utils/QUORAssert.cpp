// SPDX-License-Identifier: MIT
#include "QUORAssert.h"

#include "QUORLog.h"

#include <cstdio>
#include <cstdlib>

void quorAssertionFailed(const char* expression, const char* file, const char* function, bool fatal) {
    const QString text = QStringLiteral("ASSERTION FAILED: ") + QString::fromUtf8(expression) +
                         QStringLiteral(", ") + QString::fromUtf8(file) + QStringLiteral(", ") +
                         QString::fromUtf8(function);
    if (QUORLog::isAlive()) {
        QUORLog::Instance().logError(text);
    }
    if (fatal) {
        std::fprintf(stderr, "%s\n", text.toUtf8().constData());
        std::abort();
    }
}
