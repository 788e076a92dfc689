// SPDX-License-Identifier: MIT
#include "QUORFindingCollector.h"

#include "QUORSettingsAudit.h"
#include "QUORSettingsInForce.h"

#include <algorithm>
#include <utility>

void QUORFindingCollector::add(Cost cost, const char* code, const QString& file, const QString& problem,
                               const QString& advice) {
    _findings.append({cost, QString::fromLatin1(code), file, 0, {}, problem, advice});
}

void QUORFindingCollector::addAt(Cost cost, const char* code, File file, const QString& group,
                                 const QString& key, const QString& problem, const QString& advice) {
    const QStringList files = QUORSettingsInForce::getFiles(file);
    QUORFinding finding{cost,  QString::fromLatin1(code),      files.constFirst(),
                        0,     group + QLatin1Char('/') + key, problem,
                        advice};
    for (const QString& path : files) {
        if (const int line = QUORSettingsAudit::findLine(path, group, key); line > 0) {
            finding.file = path;
            finding.line = line;
            break;
        }
    }
    _findings.append(finding);
}

bool QUORFindingCollector::holds(const char* code) const {
    return std::ranges::any_of(
        _findings, [code](const QUORFinding& finding) { return finding.code == QLatin1String(code); });
}

QUORFindings QUORFindingCollector::takeSorted() {
    sortByCost(_findings);
    return std::exchange(_findings, {});
}
