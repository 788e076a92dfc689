// SPDX-License-Identifier: MIT
#include "QUORLandmarkList.h"

#include "QUORLog.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"

#include <QRegularExpression>

#include <iostream>
#include <limits>

namespace {

const QString FILE_NAME = QStringLiteral("QUOR3DLandmarks");
const QString GROUP = QStringLiteral("LANDMARKS");
constexpr int MAX_LABEL = 200; // more would be a bar across the picture
const QString ARRAY = QStringLiteral("landmarks");
constexpr double MISSING_ANGLE = -9999.9;

consteval const QUORSettingsKey& row(std::string_view name) {
    return QUORSettingsTable::row("LANDMARKS", name, "landmarks");
}

/// Read as an unsigned number: a negative one is huge.
unsigned readPriority(const QUORSettingsReader& reader) {
    const QUORSettingsKey& key = row("priority");
    const QString name = key.nameText();
    const double value = reader.contains(name) ? reader.readDouble(name, 0.0) : key.number[0];
    return value >= 0.0 && value < QUORLandmark::MAX_PRIORITY ? static_cast<unsigned>(value)
                                                              : QUORLandmark::MAX_PRIORITY;
}

/// Null when the entry has no label or no location on the earth.
QUORLandmark::Ptr readLandmark(const QUORSettingsReader& reader) {
    const QString label = QUORSettingsTable::readText(reader, row("label"));
    const unsigned priority = readPriority(reader);
    const double lat = QUORSettingsTable::readNumber(reader, row("location/lat"), MISSING_ANGLE);
    const double lon = QUORSettingsTable::readNumber(reader, row("location/lon"), MISSING_ANGLE);
    const double alt = QUORSettingsTable::readNumber(reader, row("location/alt"));
    const double r = QUORSettingsTable::readNumber(reader, row("color/r"));
    const double g = QUORSettingsTable::readNumber(reader, row("color/g"));
    const double b = QUORSettingsTable::readNumber(reader, row("color/b"));
    if (label.isEmpty() || lat == MISSING_ANGLE || lon == MISSING_ANGLE) {
        return nullptr;
    }
    return std::make_shared<QUORLandmark>(label.left(MAX_LABEL), QUORCoordinate(lat, lon), alt, r, g, b,
                                          priority);
}

/// A text as a settings file must hold it to be read back unchanged.
std::string iniText(const QString& text) {
    static const QRegularExpression special(QStringLiteral("[;,\"\\\\=]|^\\s|\\s$"));
    if (!text.contains(special)) {
        return text.toStdString();
    }
    QString quoted = text;
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return (QLatin1Char('"') + quoted + QLatin1Char('"')).toStdString();
}

} // namespace

QUORLandmarkList::QUORLandmarkList() {
    const QUORLogScope scope("QUORLandmarkList::QUORLandmarkList");
    load();
}

QUORLandmarkList::~QUORLandmarkList() {
    const QUORLogScope scope("QUORLandmarkList::~QUORLandmarkList");
    _landmarks.clear();
}

void QUORLandmarkList::load() {
    const QUORLogScope scope("QUORLandmarkList::load");
    QUORSettingsReader reader(FILE_NAME);
    reader.beginGroup(GROUP);
    const int size = reader.beginReadArray(ARRAY, std::numeric_limits<int>::max());
    QUORLog::Instance().logDebug(QStringLiteral("count=") + QString::number(size));
    for (const int index : reader.getArrayIndexes()) {
        QUORLog::Instance().logDebug(QStringLiteral("Landmark: #") + QString::number(index));
        reader.setArrayIndex(index);
        if (const QUORLandmark::Ptr landmark = readLandmark(reader)) {
            _landmarks.append(landmark);
        }
    }
    reader.endArray();
    reader.endGroup();
}

QUORLandmarkSet::Ptr QUORLandmarkList::getLandmarkSet(const QUORCoordinate& centre,
                                                      const QUORCoordinate& lowerBound,
                                                      const QUORCoordinate& upperBound) const {
    const QUORLogScope scope("QUORLandmarkList::getLandmarkSet");
    auto set = std::make_shared<QUORLandmarkSet>(centre, lowerBound, upperBound);
    for (const QUORLandmark::Ptr& landmark : _landmarks) {
        const bool accepted = set->contains(landmark->getLocation());
        QUORLog::Instance().logDebug(
            (accepted ? QStringLiteral("accepted: ") : QStringLiteral("rejected: ")) + landmark->getLabel());
        if (accepted) {
            set->append(landmark);
        }
    }
    return set;
}

void QUORLandmarkList::printIniFormat() const {
    std::cout << "\n[LANDMARKS]\nlandmarks/size=" << _landmarks.size() << '\n';
    for (qsizetype i = 0; i < _landmarks.size(); ++i) {
        const QUORLandmark& landmark = *_landmarks[i];
        const std::string entry = "landmarks/" + std::to_string(i + 1);
        std::cout << '\n'
                  << entry << "/label=" << iniText(landmark.getLabel()) << '\n'
                  << entry << "/priority=" << landmark.getPriority() << '\n'
                  << entry << "/location/lat=" << landmark.getLocation().getLat() << '\n'
                  << entry << "/location/lon=" << landmark.getLocation().getLon() << '\n'
                  << entry << "/location/alt=" << landmark.getAlt() << '\n'
                  << entry << "/color/r=" << landmark.getR() << '\n'
                  << entry << "/color/g=" << landmark.getG() << '\n'
                  << entry << "/color/b=" << landmark.getB() << '\n';
    }
    std::cout << std::endl;
}
