// SPDX-License-Identifier: MIT
#include "ProductReport.h"

#include "QUOR2DTop.h"
#include "QUORGridReader.h"
#include "QUORProductHeader.h"
#include "QUORProductSurvey.h"
#include "TextTable.h"

#include <QJsonArray>

#include <vtkImageData.h>

#include <algorithm>
#include <iostream>

namespace {

constexpr double CM_PER_M = 100.0;
constexpr int BAR_WIDTH = 50;

struct StatusRow {
    QUORFile::Status status;
    const char* code;
    const char* text;
};

constexpr StatusRow STATES[] = {
    {QUORFile::Valid, "valid", "complete"},
    {QUORFile::NotReadable, "not-readable", "does not exist, or cannot be read at the moment"},
    {QUORFile::Incomplete, "incomplete", "shorter than its header says: still being written, or cut off"},
    {QUORFile::NoData, "no-data", "empty, or shorter than a header"},
    {QUORFile::Invalid, "invalid", "no product file"},
    {QUORFile::CannotOpen, "cannot-open", "no regular file, or not to be read by this user"},
};

const StatusRow& rowOf(QUORFile::Status status) {
    return *std::ranges::find(STATES, status, &StatusRow::status);
}

QString number(double value, int decimals = 1) {
    return QString::number(value, 'f', decimals);
}

} // namespace

ProductReport::ProductReport(const QString& path) : _file(std::make_shared<QUORFile>(path)) {
    _error = _file->isValid() ? _file->getGridError() : QString();
    if (!isGood()) {
        return;
    }
    QUORGridReader reader(*_file);
    if (const auto grid = reader.read(_file->getZPoints(), 1.0)) {
        _statistics = QUORGridStatistics::compute(_file->getDataType(), grid->GetScalarPointer(),
                                                  grid->GetNumberOfPoints(), _file->getItemSize());
    } else {
        _error = reader.getError();
    }
}

void ProductReport::pair(const QUOR2DTop& top, const QString& product2d, int timeWindow) {
    if (!_file->isValid() || _file->getDimensions() != 3 || product2d.isEmpty()) {
        return;
    }
    QUOR3DTop own(QString{});
    own.addToAllLevels(_file);
    const QUORFileLeaf::CPtr leaf = own.findLeaf(_file->getName());
    _isPaired = true;
    _product2d = product2d;
    const QUORFileLeaf::Ptr found = top.findBestMatching2DFile(leaf, product2d, timeWindow);
    _file2d = found ? found->getPath() : QString();
    _reason = QUORProductSurvey::findReason(top, leaf, product2d, timeWindow).detail;
}

QString ProductReport::describeStatus() const {
    const QString text = QString::fromLatin1(rowOf(_file->getStatus()).text);
    return _error.isEmpty() ? text : text + QStringLiteral(", but it cannot be drawn: ") + _error;
}

void ProductReport::print() const {
    std::cout << _file->getPath().toStdString() << '\n';
    TextTable table;
    table.add({QStringLiteral("status"), describeStatus()});
    if (_file->isValid()) {
        const QUORCoordinate place = _file->getSiteCoordinates();
        const QUORDataType type = _file->getDataType();
        table.add({QStringLiteral("site"), _file->getSite()});
        table.add({QStringLiteral("place"),
                   place.toDecimalString(QUORCoordinate::Both) + QStringLiteral(", ground ") +
                       QString::number(_file->getGroundElevation()) + QStringLiteral(" m, antenna ") +
                       QString::number(_file->getRadarElevation()) + QStringLiteral(" m above the sea")});
        table.add(
            {QStringLiteral("product"), _file->getProduct() + QLatin1Char(' ') + _file->getConfiguration()});
        table.add({QStringLiteral("quantity"),
                   type.getQuantityName() + QStringLiteral(", ") + type.getQuantityUnit() +
                       QStringLiteral(", ") + number(type.getMinDisplayValue()) + QStringLiteral(" to ") +
                       number(type.getMaxDisplayValue()) + QStringLiteral(" (data type ") +
                       QString::number(_file->getRawType()) + QLatin1Char(')')});
        table.add({QStringLiteral("time"), _file->getDataTime().toString(Qt::ISODate) +
                                               QStringLiteral(", in the name ") + _file->getTime()});
    }
    if (_file->isValid()) {
        addGrid(table);
        addStatistics(table);
    }
    if (_isPaired) {
        table.add({QStringLiteral("2D product"),
                   _file2d.isEmpty() ? _reason : _product2d + QStringLiteral(": ") + _file2d});
    }
    table.print(QStringLiteral("  "));
    printHistogram();
}

void ProductReport::addGrid(TextTable& table) const {
    const QString times = QStringLiteral(" x ");
    table.add({QStringLiteral("grid"),
               QString::number(_file->getXPoints()) + times + QString::number(_file->getYPoints()) + times +
                   QString::number(_file->getZPoints()) + QStringLiteral(" points, ") +
                   QString::number(_file->getDimensions()) + QStringLiteral("D, bytes of each: ") +
                   QString::number(_file->getItemSize())});
    table.add({QStringLiteral("step"), number(_file->getXScale() / CM_PER_M) + times +
                                           number(_file->getYScale() / CM_PER_M) + times +
                                           number(_file->getZScale() / CM_PER_M) + QStringLiteral(" m")});
    table.add({QStringLiteral("extent"), number(_file->getWidthM() / 1000.0) + times +
                                             number(_file->getLengthM() / 1000.0) + times +
                                             number(_file->getHeightM() / 1000.0) + QStringLiteral(" km")});
    table.add({QStringLiteral("map"), _file->getProjection()});
}

void ProductReport::addStatistics(TextTable& table) const {
    if (!_statistics) {
        return;
    }
    const double elements = double(std::max<qint64>(_statistics->elements, 1));
    table.add({QStringLiteral("data"), number(100.0 * double(_statistics->withData) / elements, 2) +
                                           QStringLiteral(" % of ") + QString::number(_statistics->elements) +
                                           QStringLiteral(" points")});
    table.add({QStringLiteral("values"), _statistics->withData == 0
                                             ? QStringLiteral("no echo")
                                             : number(_statistics->minimum) + QStringLiteral(" to ") +
                                                   number(_statistics->maximum) + QStringLiteral(", mean ") +
                                                   number(_statistics->mean) + QLatin1Char(' ') +
                                                   _file->getDataType().getQuantityUnit()});
}

void ProductReport::printHistogram() const {
    if (!_statistics || _statistics->withData == 0) {
        return;
    }
    const qint64 largest = *std::ranges::max_element(_statistics->histogram);
    for (int bin = 0; bin < QUORGridStatistics::BINS; ++bin) {
        const qint64 count = _statistics->histogram[std::size_t(bin)];
        const int length = int((count * BAR_WIDTH + largest - 1) / largest);
        const QString line = QStringLiteral("    %1 %2  %3")
                                 .arg(number(_statistics->binStart(bin)), 9)
                                 .arg(count, 10)
                                 .arg(QString(length, QLatin1Char('#')));
        std::cout << line.toStdString() << '\n';
    }
}

QJsonObject ProductReport::toJson() const {
    QJsonObject object{{"path", _file->getPath()},
                       {"status", QString::fromLatin1(rowOf(_file->getStatus()).code)},
                       {"drawable", isGood()},
                       {"problem", isGood() ? QString() : describeStatus()}};
    if (!_file->isValid()) {
        return object;
    }
    const QUORCoordinate place = _file->getSiteCoordinates();
    const QUORDataType type = _file->getDataType();
    object.insert("site", _file->getSite());
    object.insert("latitude", place.getLat());
    object.insert("longitude", place.getLon());
    object.insert("ground_elevation_m", _file->getGroundElevation());
    object.insert("radar_elevation_m", _file->getRadarElevation());
    object.insert("product", _file->getProduct());
    object.insert("configuration", _file->getConfiguration());
    object.insert("data_type", _file->getRawType());
    object.insert("quantity", type.getQuantityName());
    object.insert("unit", type.getQuantityUnit());
    object.insert("time", _file->getDataTime().toString(Qt::ISODate));
    object.insert("name_time", _file->getTime());
    object.insert("dimensions", _file->getDimensions());
    object.insert("points", QJsonArray{_file->getXPoints(), _file->getYPoints(), _file->getZPoints()});
    object.insert("step_m", QJsonArray{_file->getXScale() / CM_PER_M, _file->getYScale() / CM_PER_M,
                                       _file->getZScale() / CM_PER_M});
    object.insert("extent_m", QJsonArray{_file->getWidthM(), _file->getLengthM(), _file->getHeightM()});
    object.insert("projection", _file->getProjection());
    if (_statistics) {
        QJsonArray histogram;
        for (int bin = 0; bin < QUORGridStatistics::BINS; ++bin) {
            histogram.append(QJsonObject{{"from", _statistics->binStart(bin)},
                                         {"count", _statistics->histogram[std::size_t(bin)]}});
        }
        object.insert("values", QJsonObject{{"points", _statistics->elements},
                                            {"with_data", _statistics->withData},
                                            {"minimum", _statistics->minimum},
                                            {"maximum", _statistics->maximum},
                                            {"mean", _statistics->mean},
                                            {"histogram", histogram}});
    }
    if (_isPaired) {
        object.insert("pair", QJsonObject{{"product", _product2d}, {"path", _file2d}, {"reason", _reason}});
    }
    return object;
}
