// SPDX-License-Identifier: MIT
#include "QUORLogOnce.h"

#include "QUORLog.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

namespace {

// Subjects come from file and key names; forgetting them all repeats a few lines at worst.
constexpr qsizetype MAXIMUM_SUBJECTS = 1000;

struct Memory {
    QMutex mutex;
    QHash<QString, QString> lines;
};

Memory& memory() {
    static Memory instance;
    return instance;
}

bool isNew(const QString& subject, const QString& text) {
    Memory& m = memory();
    const QMutexLocker lock(&m.mutex);
    if (const auto known = m.lines.constFind(subject); known != m.lines.cend() && *known == text) {
        return false;
    }
    if (m.lines.size() >= MAXIMUM_SUBJECTS) {
        m.lines.clear();
    }
    m.lines.insert(subject, text);
    return true;
}

} // namespace

void QUORLogOnce::logError(const QString& subject, const QString& text) {
    if (isNew(subject, text)) {
        QUORLog::Instance().logError(text);
    }
}

void QUORLogOnce::logWarning(const QString& subject, const QString& text) {
    if (isNew(subject, text)) {
        QUORLog::Instance().logWarning(text);
    }
}

void QUORLogOnce::forget(const QString& subject) {
    Memory& m = memory();
    const QMutexLocker lock(&m.mutex);
    m.lines.remove(subject);
}
