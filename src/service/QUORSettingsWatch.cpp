// SPDX-License-Identifier: MIT
#include "QUORSettingsWatch.h"

#include "QUORBackgroundSettings.h"
#include "QUORConfig.h"
#include "QUORFileStamp.h"
#include "QUORLog.h"
#include "QUORSettingsInForce.h"
#include "QUORSetupCheck.h"

#include <utility>

namespace {

using File = QUORSettingsKey::File;

QString makeStamp() {
    QString text;
    for (const File file : {File::Main, File::Background, File::Colors, File::Styles, File::Landmarks}) {
        const QStringList paths = QUORSettingsInForce::getFiles(file);
        for (const QString& path : paths) {
            text += path + QLatin1Char(' ') + QUORFileStamp::of(path).toText() + QLatin1Char('\n');
        }
    }
    return text;
}

bool isDamaged() {
    return QUORConfig::instance()->isDamaged() || !QUORBackgroundSettings().isRead();
}

QString describe(const QUORFinding& finding) {
    QString text = finding.file;
    if (finding.line > 0) {
        text += QStringLiteral(", line ") + QString::number(finding.line);
    }
    for (const QString& part : {finding.key, finding.problem}) {
        if (!part.isEmpty()) {
            text += (text.isEmpty() ? QString() : QStringLiteral(": ")) + part;
        }
    }
    return finding.advice.isEmpty() ? text : text + QStringLiteral("; ") + finding.advice;
}

} // namespace

void QUORSettingsWatch::look() {
    const QString stamp = makeStamp();
    // Later the guards of the files tell of damage, and what was read last stays in force.
    const bool isFirst = _stamp.isEmpty();
    const QString told = isFirst && !QUORBackgroundSettings().isRead()
                             ? QUORBackgroundSettings().getSettingsFileName()
                             : QString();
    if (stamp == _stamp || (!isFirst && isDamaged())) {
        return;
    }
    _stamp = stamp;
    QUORSetupCheck check;
    check.runSettings();
    QSet<QString> lines;
    for (const QUORFinding& finding : check.getFindings()) {
        const QString line = describe(finding);
        if (finding.code == "bad-line" && finding.file == told) {
            continue;
        }
        if (finding.cost > QUORFinding::Cost::Remark && !_lines.contains(line) && !lines.contains(line)) {
            QUORLog::Instance().logError(line);
        }
        lines.insert(line);
    }
    _lines = std::move(lines);
}
