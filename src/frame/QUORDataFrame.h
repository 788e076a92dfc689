// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataStore.h"
#include "QUORFileLeaf.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"

#include <QString>
#include <QStringList>

#include <memory>

class QUORGeoProjection;
class QUORLandmarkSet;
class QUORTerrainSet;

/// Everything that one image shows: the 3D product, the 2D product that matches it best, the terrain and
/// the landmarks of the area and the product's rendering settings. State what is wanted, then load: only
/// what changed is loaded again.
///
/// Built and updated on the thread of a job, and only read, shared as CPtr, once it was handed on.
class QUORDataFrame {
public:
    using Ptr = std::shared_ptr<QUORDataFrame>;
    using CPtr = std::shared_ptr<const QUORDataFrame>;

    explicit QUORDataFrame(QUORDataStore::Ptr store);
    /// A copy without the product settings, given ones too: it reads those of the product.
    explicit QUORDataFrame(const QUORDataFrame::CPtr& other);
    /// Loads at once. An empty 2D product lets the frame choose the first one within the time window; the
    /// terrain range is half the grid's diagonal times the factor. Without the 3D product the frame stays
    /// empty.
    QUORDataFrame(QUORDataStore::Ptr store, const QString& site, const QString& moment,
                  const QString& product, const QString& configuration, const QString& product2d,
                  int timeWindow, double terrainFactor);
    virtual ~QUORDataFrame();
    QUORDataFrame(const QUORDataFrame&) = delete;
    QUORDataFrame& operator=(const QUORDataFrame&) = delete;

    /// Asks for this 3D product, which the caller has found: `updateData3d` does not look for it again.
    void setData3d(const QUORFileLeaf::CPtr& leaf);
    /// These settings of the product in place of the stored ones, which are then neither read nor completed.
    void setProductSettings(const QUORProductSettings::Ptr& settings);
    /// Takes this 2D product, or none for a null pointer, whatever its time: `updateDataRest` does not look
    /// for another one.
    void setData2d(const QUORFileLeaf::CPtr& leaf);
    void setSite(const QString& site) { _site = site; }
    /// The 3D file's time key, and the seconds within half of which a 2D file matches.
    void setMoment(const QString& moment, int timeWindow);
    void setDataParams3d(const QString& product, const QString& configuration);
    void setDataParams2d(const QString& product2d) { _product2d = product2d; }
    /// Metres from the site that terrain and landmarks must cover.
    void setDataParamsTerrain(double range) { _terrainRange = range; }

    /// Loads the 3D product and its settings; false when the store has no such product.
    bool updateData3d();
    /// Loads the 2D product, terrain and landmarks. Needs the 3D product; what is missing stays null.
    void updateDataRest();
    /// Reads the product's settings again. Needs the 3D product.
    void updateProductSettings();
    void resetFrame();

    /// Site and time of the 3D product.
    QString getDataId(const QUORGeneralSettings::CPtr& settings) const;
    /// Quantity, time, extent and site of the 3D product, one line each.
    QStringList getLegend(const QUORGeneralSettings::CPtr& settings) const;
    /// What a legend may say beyond that: time in UTC to the second, height factor and ticks, the scale of a
    /// map that is larger than the ground and, `with2d`, the 2D product.
    QStringList getLegendDetails(const QUORGeneralSettings& settings, bool with2d = true) const;

    /// Null when not loaded, here and below.
    QUORFileLeaf::CPtr getData3d() const { return _activeData3d; }
    QUORFileLeaf::CPtr getData2d() const { return _data2d; }
    std::shared_ptr<const QUORTerrainSet> getTerrainSet() const { return _terrainSet; }
    std::shared_ptr<const QUORLandmarkSet> getLandmarkSet() const { return _landmarkSet; }
    std::shared_ptr<const QUORGeoProjection> getGeoProjection() const { return _geoProjection; }
    QUORProductSettings::CPtr getProductSettings() const { return _productSettings; }
    /// Corners of the area in whole degrees, south-west and north-east.
    QUORCoordinate getLowerBound() const { return _lowerBound; }
    QUORCoordinate getUpperBound() const { return _upperBound; }
    QString getSite() const { return _site; }
    QString getMoment() const { return _moment; }
    int getTimeWindow() const { return _timeWindow; }
    QString getProduct() const { return _product; }
    QString getConfiguration() const { return _configuration; }
    QString getProduct2d() const { return _product2d; }
    double getTerrainRange() const { return _terrainRange; }

private:
    bool isData3dCurrent() const;
    bool isData2dCurrent() const;
    bool isTerrainCurrent(const QUORCoordinate& lower, const QUORCoordinate& upper) const;
    void updateData2d();
    void updateTerrain();
    void chooseProduct2d();
    void logRequest() const;
    QStringList makeLegend(const QUORGeneralSettings& settings) const;

    QUORDataStore::Ptr _store;
    QUORFileLeaf::CPtr _activeData3d;
    QUORFileLeaf::CPtr _data2d;
    bool _isData2dGiven = false;
    std::shared_ptr<QUORTerrainSet> _terrainSet;
    std::shared_ptr<QUORLandmarkSet> _landmarkSet;
    QString _site;
    QString _moment;
    int _timeWindow = 0;
    QString _product;
    QString _configuration;
    QString _product2d;
    std::shared_ptr<const QUORGeoProjection> _geoProjection;
    double _terrainRange = 0.0;
    QUORCoordinate _lowerBound;
    QUORCoordinate _upperBound;
    QUORProductSettings::Ptr _productSettings;
    bool _isProductSettingsGiven = false;
};
