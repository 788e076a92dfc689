// SPDX-License-Identifier: MIT
#include "QUORLogOnce.h"

#include "QUORLog.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace {

// Subjects come from the names of files and keys, of which a file may hold any number; 32 bytes each.
constexpr qsizetype MAXIMUM_WARNINGS = 100000;
constexpr qsizetype MAXIMUM_ERRORS = 2 * MAXIMUM_WARNINGS;
const QString FULL = QStringLiteral("More lines about lasting states are not logged");

struct Memory {
    QMutex mutex;
    QHash<std::size_t, std::size_t> lines; ///< hash of the subject to hash of its last line
};

Memory& memory() {
    static Memory instance;
    return instance;
}

/// What to log: the text, nothing when it is known, or once that there is no room for it.
QString findNews(const QString& subject, const QString& text, qsizetype maximum) {
    Memory& m = memory();
    const QMutexLocker lock(&m.mutex);
    const bool full = m.lines.size() >= maximum && !m.lines.contains(qHash(subject));
    const QString& line = full ? FULL : text;
    const std::size_t news = qHash(line);
    return std::exchange(m.lines[qHash(full ? FULL : subject)], news) == news ? QString() : line;
}

} // namespace

void QUORLogOnce::logError(const QString& subject, const QString& text) {
    if (const QString line = findNews(subject, text, MAXIMUM_ERRORS); !line.isEmpty()) {
        QUORLog::Instance().logError(line);
    }
}

void QUORLogOnce::logWarning(const QString& subject, const QString& text) {
    if (const QString line = findNews(subject, text, MAXIMUM_WARNINGS); !line.isEmpty()) {
        QUORLog::Instance().logWarning(line);
    }
}

void QUORLogOnce::forget(const QString& subject) {
    Memory& m = memory();
    const QMutexLocker lock(&m.mutex);
    m.lines.remove(qHash(subject));
}
