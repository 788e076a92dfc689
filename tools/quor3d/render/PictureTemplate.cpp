// SPDX-License-Identifier: MIT
#include "PictureTemplate.h"

#include "QUORImageName.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

const QRegularExpression& placeholder() {
    static const QRegularExpression form(QStringLiteral("\\{([^{}]*)\\}"));
    return form;
}

} // namespace

QStringList PictureTemplate::names() {
    return {QStringLiteral("site"), QStringLiteral("configuration"), QStringLiteral("product"),
            QStringLiteral("time"), QStringLiteral("view"),          QStringLiteral("state"),
            QStringLiteral("size"), QStringLiteral("name")};
}

QString PictureTemplate::findProblem() const {
    for (auto each = placeholder().globalMatch(_text); each.hasNext();) {
        const QString name = each.next().captured(1);
        if (!names().contains(name)) {
            return QStringLiteral("{%1} is not known, only {%2}")
                .arg(name, names().join(QStringLiteral("}, {")));
        }
    }
    QString rest = _text;
    rest.remove(placeholder());
    if (rest.contains(QLatin1Char('{')) || rest.contains(QLatin1Char('}'))) {
        return QStringLiteral("a brace has no partner");
    }
    const QStringList parts = _text.split(QLatin1Char('/'));
    if (parts.contains(QString()) || parts.contains(QStringLiteral("..")) ||
        parts.contains(QStringLiteral("."))) {
        return QStringLiteral("it must name a file below the output folder");
    }
    return {};
}

QString PictureTemplate::expand(const QHash<QString, QString>& values) const {
    QStringList parts = _text.split(QLatin1Char('/'));
    for (QString& part : parts) {
        QString name;
        qsizetype at = 0;
        for (auto each = placeholder().globalMatch(part); each.hasNext();) {
            const QRegularExpressionMatch match = each.next();
            name += part.mid(at, match.capturedStart() - at) + values.value(match.captured(1));
            at = match.capturedEnd();
        }
        part = QUORImageName::clean(name + part.mid(at));
        if (part.isEmpty()) {
            part = QStringLiteral("_");
        }
    }
    return parts.join(QLatin1Char('/'));
}
