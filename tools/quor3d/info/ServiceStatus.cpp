// SPDX-License-Identifier: MIT
#include "ServiceStatus.h"

#include "QUORSystem.h"
#include "Terminal.h"
#include "TextTable.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <iostream>
#include <utility>

namespace {

/// The file is written every minute.
constexpr qint64 SILENCE_S = 180;
constexpr qint64 LARGEST_FILE = 4 << 20; // bytes

bool isService(qint64 pid) {
    if (pid <= 0 || (::kill(pid_t(pid), 0) != 0 && errno != EPERM)) {
        return false;
    }
    QFile name(QStringLiteral("/proc/") + QString::number(pid) + QStringLiteral("/comm"));
    // Where other users' processes are hidden, the number alone has to do.
    return !name.open(QIODevice::ReadOnly) || name.readAll().trimmed() == "quor3dd";
}

QDateTime timeOf(const QJsonValue& value) {
    return QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
}

QString describeSpan(double seconds) {
    const auto in = [&](int unit, const char* name) {
        return QString::number(seconds / unit, 'f', 0) + QLatin1Char(' ') + QLatin1String(name);
    };
    return seconds < 10.0       ? QString::number(std::round(seconds * 10.0) / 10.0) + QStringLiteral(" s")
           : seconds < 120.0    ? in(1, "s")
           : seconds < 7200.0   ? in(60, "min")
           : seconds < 172800.0 ? in(3600, "h")
                                : in(86400, "days");
}

QString describeTime(const QJsonValue& value) {
    const QDateTime time = timeOf(value);
    if (!time.isValid()) {
        return QStringLiteral("unknown");
    }
    return time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) + QStringLiteral(" UTC, ") +
           describeSpan(double(time.secsTo(QDateTime::currentDateTimeUtc()))) + QStringLiteral(" ago");
}

QString describeCounts(const QJsonObject& counts) {
    QStringList parts;
    for (auto count = counts.constBegin(); count != counts.constEnd(); ++count) {
        if (count.value().toDouble() > 0) {
            parts.append(QString::number(count.value().toDouble(), 'g', 15) + QLatin1Char(' ') + count.key());
        }
    }
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QStringLiteral(", "));
}

QString describeDirectory(const QJsonObject& directory) {
    const QString path = directory[QLatin1String("path")].toString();
    return path.isEmpty()
               ? QStringLiteral("none configured")
               : path + QStringLiteral(", ") + QString::number(directory[QLatin1String("products")].toInt()) +
                     QStringLiteral(" products");
}

QString describeImage(const QJsonObject& image) {
    QStringList late;
    for (const auto& [name, what] : {std::pair{"secondsAfterArrival", " after its file"},
                                     std::pair{"secondsAfterProduct", " after its product time"}}) {
        if (const QJsonValue value = image[QLatin1String(name)]; value.isDouble()) {
            late.append(describeSpan(value.toDouble()) + QLatin1String(what));
        }
    }
    return image[QLatin1String("file")].toString() + QStringLiteral("\n                ") +
           describeTime(image[QLatin1String("written")]) +
           (late.isEmpty() ? QString() : QStringLiteral("; ")) + late.join(QStringLiteral(", "));
}

} // namespace

QString ServiceStatus::findDefaultFile() {
    const QString packaged = QStringLiteral("/run/quor3dd/status.json");
    return QFileInfo::exists(packaged) ? packaged
                                       : QUORSystem::expandHome(QStringLiteral("~/.quor3d/status.json"));
}

bool ServiceStatus::read(const QString& fileName, QString& error) {
    _file = fileName;
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly)) {
        error = QFileInfo::exists(fileName)
                    ? file.errorString()
                    : QStringLiteral("there is no such file, no service has written it");
        return false;
    }
    _object = QJsonDocument::fromJson(file.read(LARGEST_FILE)).object();
    if (!_object.contains(QLatin1String("pid"))) {
        error = QStringLiteral("it holds no status");
        return false;
    }
    const QDateTime updated = timeOf(_object[QLatin1String("updated")]);
    const bool recent = updated.isValid() && updated.secsTo(QDateTime::currentDateTimeUtc()) < SILENCE_S;
    _state = !isService(qint64(_object[QLatin1String("pid")].toDouble())) ? State::Ended
             : recent                                                     ? State::Running
                                                                          : State::Silent;
    return true;
}

QString ServiceStatus::getStateName() const {
    switch (_state) {
    case State::Running:
        return QStringLiteral("running");
    case State::Silent:
        return QStringLiteral("silent");
    case State::Ended:
        break;
    }
    return QStringLiteral("ended");
}

void ServiceStatus::print() const {
    const auto get = [this](const char* name) { return _object[QLatin1String(name)]; };
    const bool good = _state == State::Running;
    const std::string state =
        Terminal::paint(good ? Terminal::Color::Bold : Terminal::Color::Red, getStateName().toStdString());
    std::cout << "quor3dd " << get("version").toString().toStdString() << ": " << state << '\n';
    TextTable table;
    table.add({QStringLiteral("process"),
               QString::number(get("pid").toDouble(), 'g', 15) + QStringLiteral(", ") +
                   QString::number(get("residentBytes").toDouble() / 1.0e6, 'f', 0) + QStringLiteral(" MB")});
    table.add({QStringLiteral("started"), describeTime(get("started"))});
    table.add({QStringLiteral("last heard"), describeTime(get("updated"))});
    table.add({QStringLiteral("3D products"), describeDirectory(get("directory3d").toObject())});
    table.add({QStringLiteral("2D products"), describeDirectory(get("directory2d").toObject())});
    const QJsonObject output = get("output").toObject();
    table.add({QStringLiteral("images to"),
               output[QLatin1String("path")].toString() + QStringLiteral(", ") +
                   output[QLatin1String("format")].toString() + QLatin1Char(' ') +
                   QString::number(output[QLatin1String("width")].toInt()) + QLatin1Char('x') +
                   QString::number(output[QLatin1String("height")].toInt())});
    table.add({QStringLiteral("written"), QString::number(get("written").toDouble(), 'g', 15)});
    table.add({QStringLiteral("failed"), describeCounts(get("failed").toObject())});
    table.add({QStringLiteral("ignored"), describeCounts(get("ignored").toObject())});
    table.add({QStringLiteral("waiting"), describeCounts(get("waiting").toObject())});
    if (const QJsonObject job = get("job").toObject(); !job.isEmpty()) {
        table.add({QStringLiteral("at work on"), job[QLatin1String("file")].toString() +
                                                     QStringLiteral(", since ") +
                                                     describeTime(job[QLatin1String("started")])});
    }
    const QJsonObject last = get("lastImage").toObject();
    table.add(
        {QStringLiteral("last image"), last.isEmpty() ? QStringLiteral("none yet") : describeImage(last)});
    table.print(QStringLiteral("  "));
    printImages();
}

void ServiceStatus::printImages() const {
    TextTable table;
    for (const QJsonValue& value : _object[QLatin1String("images")].toArray()) {
        const QJsonObject image = value.toObject();
        table.add({image[QLatin1String("site")].toString() + QLatin1Char(' ') +
                       image[QLatin1String("configuration")].toString(),
                   describeTime(image[QLatin1String("written")])});
    }
    table.print(QStringLiteral("  "));
}

QJsonObject ServiceStatus::toJson() const {
    QJsonObject object = _object;
    object.insert(QStringLiteral("state"), getStateName());
    object.insert(QStringLiteral("file"), _file);
    return object;
}
