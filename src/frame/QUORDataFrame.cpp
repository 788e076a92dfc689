// SPDX-License-Identifier: MIT
#include "QUORDataFrame.h"

#include "QUORAssert.h"
#include "QUORGeoProjection.h"
#include "QUORLandmarkList.h"
#include "QUORLog.h"
#include "QUORTerrainDir.h"

#include <QCoreApplication>

#include <cmath>

namespace {

constexpr int MINIMUM_LATITUDES = 4;
constexpr double METRES_PER_KM = 1000.0;

QString translated(const char* text) {
    return QCoreApplication::translate("Datalib", text);
}

} // namespace

QUORDataFrame::QUORDataFrame(QUORDataStore::Ptr store) : _store(std::move(store)) {
    const QUORLogScope scope("QUORDataFrame::QUORDataFrame");
}

QUORDataFrame::QUORDataFrame(const QUORDataFrame::CPtr& other)
    : _store(other->_store),
      _activeData3d(other->_activeData3d),
      _data2d(other->_data2d),
      _isData2dGiven(other->_isData2dGiven),
      _terrainSet(other->_terrainSet),
      _landmarkSet(other->_landmarkSet),
      _site(other->_site),
      _moment(other->_moment),
      _timeWindow(other->_timeWindow),
      _product(other->_product),
      _configuration(other->_configuration),
      _product2d(other->_product2d),
      _geoProjection(other->_geoProjection),
      _terrainRange(other->_terrainRange),
      _lowerBound(other->_lowerBound),
      _upperBound(other->_upperBound) {
    const QUORLogScope scope("QUORDataFrame::QUORDataFrame");
    logDebug(QStringLiteral("(copy)"));
}

QUORDataFrame::QUORDataFrame(QUORDataStore::Ptr store, const QString& site, const QString& moment,
                             const QString& product, const QString& configuration, const QString& product2d,
                             int timeWindow, double terrainFactor)
    : _store(std::move(store)),
      _site(site),
      _moment(moment),
      _timeWindow(timeWindow),
      _product(product),
      _configuration(configuration),
      _product2d(product2d) {
    logDebug(QStringLiteral("QUORDataFrame::QUORDataFrame() called."));
    if (!updateData3d()) {
        logDebug(QStringLiteral("Loading data frame failed."));
        QUORLog::Instance().logHistory(translated("Requested data not available."));
        return;
    }
    if (_product2d.isEmpty()) {
        chooseProduct2d();
    }
    const QUORFile& file = *_activeData3d->getFile();
    _terrainRange = std::hypot(file.getLengthM(), file.getWidthM()) * 0.5 * terrainFactor;
    updateDataRest();
    logRequest();
    logDebug(QStringLiteral("QUORDataFrame::QUORDataFrame() finished."));
}

QUORDataFrame::~QUORDataFrame() {
    const QUORLogScope scope("QUORDataFrame::~QUORDataFrame");
    resetFrame();
}

void QUORDataFrame::setData3d(const QUORFileLeaf::CPtr& leaf) {
    _activeData3d = leaf;
    _site = leaf->getSite();
    _moment = leaf->getTime();
    setDataParams3d(leaf->getProduct(), leaf->getConfiguration());
}

void QUORDataFrame::setProductSettings(const QUORProductSettings::Ptr& settings) {
    _productSettings = settings;
    _isProductSettingsGiven = true;
}

void QUORDataFrame::setData2d(const QUORFileLeaf::CPtr& leaf) {
    _data2d = leaf;
    _isData2dGiven = true;
}

void QUORDataFrame::setMoment(const QString& moment, int timeWindow) {
    _moment = moment;
    _timeWindow = timeWindow;
}

void QUORDataFrame::setDataParams3d(const QString& product, const QString& configuration) {
    _product = product;
    _configuration = configuration;
}

bool QUORDataFrame::isData3dCurrent() const {
    return _activeData3d && _activeData3d->getSite() == _site && _activeData3d->getTime() == _moment &&
           _activeData3d->getProduct() == _product && _activeData3d->getConfiguration() == _configuration;
}

bool QUORDataFrame::updateData3d() {
    const QUORLogScope scope("QUORDataFrame::updateData3d");
    if (!isData3dCurrent()) {
        logDebug(QStringLiteral("3D data not available or parameters changed -> load new data."));
        const QUOR3DTop::Ptr top = _store->get3DTop();
        _activeData3d = top ? top->findLeaf(_site, _product, _configuration, _moment) : nullptr;
    }
    if (!_activeData3d || !_activeData3d->getFile()) {
        _activeData3d.reset();
        logDebug(QStringLiteral("Loading 3d data failed."));
        return false;
    }
    _geoProjection = _activeData3d->getFile()->getGeoProjection();
    updateProductSettings();
    logDebug(QStringLiteral("Loading 3d data succeeded."));
    return true;
}

void QUORDataFrame::updateProductSettings() {
    const QUORLogScope scope("QUORDataFrame::updateProductSettings");
    if (!QUOR_VERIFY(_activeData3d) || _isProductSettingsGiven) {
        return;
    }
    logDebug(QStringLiteral("Loading product settings.."));
    _productSettings.reset();
    const QUORFile& file = *_activeData3d->getFile();
    const auto generated =
        file.getGridError().isEmpty() ? QUORProductSettings::Saved : QUORProductSettings::NotSaved;
    _productSettings = std::make_shared<QUORProductSettings>(
        _activeData3d->getProduct(), _activeData3d->getConfiguration(), file.getDataType(), generated);
}

void QUORDataFrame::updateDataRest() {
    const QUORLogScope scope("QUORDataFrame::updateDataRest");
    if (!QUOR_VERIFY(_activeData3d)) {
        return;
    }
    if (!_isData2dGiven && !isData2dCurrent()) {
        logDebug(QStringLiteral("2D data not available or parameters changed -> load new data."));
        updateData2d();
    }
    if (_geoProjection) {
        updateTerrain();
    }
}

// A 2D product of another site, or one without a time, never belongs to the 3D product.
bool QUORDataFrame::isData2dCurrent() const {
    if (!_data2d || _data2d->getProduct() != _product2d || _data2d->getSite() != _activeData3d->getSite()) {
        return false;
    }
    const QDateTime time2d = _data2d->getFile()->getDataTime();
    const QDateTime time3d = _activeData3d->getFile()->getDataTime();
    return time2d.isValid() && time3d.isValid() && std::abs(time2d.secsTo(time3d)) <= _timeWindow;
}

void QUORDataFrame::updateData2d() {
    const QUOR2DTop::Ptr top = _store->get2DTop();
    _data2d = top ? top->findBestMatching2DFile(_activeData3d, _product2d, _timeWindow) : nullptr;
    if (_data2d && !_data2d->getFile()) {
        _data2d.reset();
    }
}

void QUORDataFrame::chooseProduct2d() {
    logDebug(QStringLiteral("2d product not selected -> using default."));
    if (const QUOR2DTop::Ptr top = _store->get2DTop()) {
        _product2d = top->findAllMatchingProducts(_activeData3d, _timeWindow, false).value(0);
    }
}

bool QUORDataFrame::isTerrainCurrent(const QUORCoordinate& lower, const QUORCoordinate& upper) const {
    return _terrainSet && !_terrainSet->hasExpired() && lower == _lowerBound && upper == _upperBound &&
           _terrainSet->getProjection()->isSameMap(*_geoProjection);
}

void QUORDataFrame::updateTerrain() {
    const QUORCoordinate site = _geoProjection->getReferenceLocation();
    int minLat = 0;
    int maxLat = 0;
    int minLon = 0;
    int maxLon = 0;
    site.calcLatLonBounds(_terrainRange, minLat, maxLat, minLon, maxLon, MINIMUM_LATITUDES);
    const QUORCoordinate lower{double(minLat), double(minLon)};
    const QUORCoordinate upper{double(maxLat), double(maxLon)};
    if (isTerrainCurrent(lower, upper)) {
        return;
    }
    logDebug(QStringLiteral("Terrain data not available or parameters changed -> load new data."));
    _lowerBound = lower;
    _upperBound = upper;
    const QUORTerrainDir::Ptr terrain = _store->getTerrainDir();
    _terrainSet = terrain ? terrain->getTerrainSet(_geoProjection, lower, upper) : nullptr;
    _landmarkSet = _store->getLandmarkList()->getLandmarkSet(site, lower, upper);
}

void QUORDataFrame::logRequest() const {
    logDebug(QStringLiteral("site: ") + _site);
    logDebug(QStringLiteral("product: ") + _product);
    logDebug(QStringLiteral("configuration: ") + _configuration);
    logDebug(QStringLiteral("moment: ") + _moment + QStringLiteral(" +/-") + QString::number(_timeWindow) +
             QStringLiteral("s"));
    logDebug(QStringLiteral("product2d: ") + _product2d);
}

void QUORDataFrame::resetFrame() {
    _activeData3d.reset();
    _data2d.reset();
    _isData2dGiven = false;
    _isProductSettingsGiven = false;
    _terrainSet.reset();
    _landmarkSet.reset();
    _geoProjection.reset();
    _site.clear();
    _moment.clear();
    _product.clear();
    _configuration.clear();
    _product2d.clear();
    _timeWindow = 0;
}

QString QUORDataFrame::getDataId(const QUORGeneralSettings::CPtr& settings) const {
    QUOR_ASSERT(settings);
    if (!_activeData3d) {
        return translated("(No data loaded)");
    }
    return _activeData3d->getSite() + QStringLiteral(": ") +
           settings->formattedTime(_activeData3d->getFile()->getDataTime());
}

QStringList QUORDataFrame::getLegend(const QUORGeneralSettings::CPtr& settings) const {
    QUOR_ASSERT(settings);
    logDebug(QStringLiteral("QUORDataFrame::getLegend() called."));
    QStringList legend = makeLegend(*settings);
    logDebug(QStringLiteral("QUORDataFrame::getLegend() finished"));
    return legend;
}

QStringList QUORDataFrame::makeLegend(const QUORGeneralSettings& settings) const {
    const QUORFile::CPtr file = _activeData3d ? _activeData3d->getFile() : nullptr;
    if (!file || !file->isValid()) {
        return {QStringLiteral("Data not available")};
    }
    const auto extent = [&](double metres) {
        return QString::number(settings.getCorrectLengthBig(metres / METRES_PER_KM), 'f', 1);
    };
    const QUORDataType type = file->getDataType();
    const QStringList extents{extent(file->getWidthM()), extent(file->getLengthM()),
                              extent(file->getHeightM())};
    return {type.getQuantityName() + QStringLiteral(", ") + type.getQuantityUnit(),
            settings.formattedTime(file->getDataTime()),
            extents.join(QStringLiteral(" x ")) + QLatin1Char(' ') + settings.getLengthUnitBig(),
            file->getSite() + QLatin1Char(' ') +
                settings.formatCoordinates(file->getSiteCoordinates(), QUORCoordinate::Both) +
                QStringLiteral(", ") + settings.formattedSmallLength(file->getRadarElevation(), 0) +
                QStringLiteral(" ASL")};
}

QStringList QUORDataFrame::getLegendDetails(const QUORGeneralSettings& settings, bool with2d) const {
    const auto utc = [](const QUORFile& file, const QString& form) {
        return file.getDataTime().toString(form) + QStringLiteral(" UTC");
    };
    QStringList lines;
    if (_activeData3d && _activeData3d->getFile()->isValid()) {
        lines << utc(*_activeData3d->getFile(), QStringLiteral("yyyy-MM-dd HH:mm:ss"))
              << QStringLiteral("Heights x %1, a tick each %2")
                     .arg(QString::number(settings.getVerticalScale()),
                          settings.formattedSmallLength(settings.getHeightTicks(), 0));
        const double scale = _activeData3d->getFile()->getMapScale();
        if (scale != 1.0) {
            lines << QStringLiteral("Map distances: 100 %1 = %2 %1 of ground")
                         .arg(settings.getLengthUnitBig(), QString::number(100.0 / scale, 'f', 0));
        }
    }
    if (with2d && _data2d) {
        const QUORFile& file = *_data2d->getFile();
        lines << _data2d->getProduct() + QStringLiteral(", ") + file.getDataType().getQuantityUnit() +
                     QStringLiteral(", ") + utc(file, QStringLiteral("HH:mm:ss"));
    }
    return lines;
}
