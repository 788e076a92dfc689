// SPDX-License-Identifier: MIT
#include "LogCapture.h"

#include "QUORLog.h"
#include "WaitUntil.h"

#include <QFile>
#include <QRegularExpression>

LogCapture::LogCapture() : _previousLevel(QUORLog::Instance().level()) {
    QUORLog::Instance().setLevel(QUORLog::Debug);
    QUORLog::Instance().logOpen(_dir.filePath(QStringLiteral("log")));
}

LogCapture::~LogCapture() {
    QUORLog::Instance().setLevel(_previousLevel);
    QUORLog::Instance().logOpen({});
}

QStringList LogCapture::lines() const {
    QFile file(_dir.filePath(QStringLiteral("log")));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    static const QRegularExpression timestamp(QStringLiteral("^\\S+ \\S+ +\\d+ [\\d:]+ \\d{4} "));
    QStringList result = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString& line : result) {
        line.remove(timestamp);
    }
    return result;
}

int LogCapture::count(const QString& text) const {
    return int(lines().filter(text).size());
}

bool LogCapture::waitFor(const QString& text, int milliseconds) const {
    return waitUntil([&] { return contains(text); }, milliseconds);
}

void LogCapture::clear() {
    QFile::resize(_dir.filePath(QStringLiteral("log")), 0);
}
