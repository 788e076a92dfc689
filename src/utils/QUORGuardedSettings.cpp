// SPDX-License-Identifier: MIT
#include "QUORGuardedSettings.h"

#include "QUORLogOnce.h"
#include "QUORSettingsFile.h"

#include <QFileInfo>

#include <optional>

namespace {

constexpr auto STAND_IN = "quorStandIn";

/// An edit that shortens the last line of a file without a last line end looks the same, and is none.
bool isCutOff(const QByteArray& content, const QByteArray& before) {
    return content.size() < before.size() && !content.endsWith('\n') && before.startsWith(content) &&
           before.indexOf('\n', content.size()) >= 0 && before.at(content.size()) != '\n' &&
           before.at(content.size()) != '\r';
}

} // namespace

QSettings* QUORGuardedSettings::open(const QString& fileName, const Opener& opener,
                                     const std::function<QString()>& consequence) {
    _settings.reset();
    if (fileName != _fileName) {
        _fileName = fileName;
        _lastGood.reset();
    }
    QUORSettingsFile::awaitSave(fileName);
    const QUORFileStamp stamp = QUORFileStamp::of(fileName);
    QString error;
    const std::optional<QByteArray> content = QUORSettingsFile::read(fileName, error);
    _damage = content ? findDamage(*content) : QStringLiteral("cannot be read: ") + error;
    report(consequence);
    if (isDamaged() && _lastGood) {
        return _lastGood.get();
    }
    if (stamp != _stamp) {
        _lastGood.reset();
        QUORSettingsFile::forgetParsed();
        _stamp = stamp;
    }
    _settings = opener();
    if (!isDamaged() && !_lastGood) {
        _lastGood = opener();
        _content = *content;
        if (_lastGood) {
            _lastGood->setProperty(STAND_IN, true);
        }
    }
    return _settings.get();
}

bool QUORGuardedSettings::isStandIn(const QSettings& settings) {
    return settings.property(STAND_IN).toBool();
}

QString QUORGuardedSettings::findDamage(const QByteArray& content) const {
    const bool needsGroup =
        _need == Group::Required || (_lastGood && QUORSettingsFile::hasGroup(_content, _group));
    if (const int line = QUORSettingsFile::findBadLine(content); line > 0) {
        return QStringLiteral("has a line that is no comment, [section] or key=value of one line: ") +
               QString::number(line);
    }
    if (!QUORSettingsFile::hasKeys(content)) {
        return QFileInfo::exists(_fileName) ? QStringLiteral("is empty") : QStringLiteral("is missing");
    }
    if (needsGroup && !QUORSettingsFile::hasGroup(content, _group)) {
        return QStringLiteral("has no section [") + _group + QLatin1Char(']');
    }
    return _lastGood && isCutOff(content, _content) ? QStringLiteral("ends inside a line") : QString();
}

void QUORGuardedSettings::report(const std::function<QString()>& consequence) const {
    const QString subject = QStringLiteral("damage of ") + _fileName;
    if (!isDamaged()) {
        QUORLogOnce::forget(subject);
    } else if (_lastGood) {
        QUORLogOnce::logError(subject, QStringLiteral("Settings file ") + _fileName + QLatin1Char(' ') +
                                           _damage + QStringLiteral("; what was read last stays in force"));
    } else if (_need == Group::Required) {
        QUORLogOnce::logError(subject, QStringLiteral("Settings file ") + _fileName + QLatin1Char(' ') +
                                           _damage + QStringLiteral("; ") + consequence());
    }
}
