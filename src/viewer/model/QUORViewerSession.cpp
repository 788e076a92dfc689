// SPDX-License-Identifier: MIT
#include "QUORViewerSession.h"

#include "QUORBackgroundSettings.h"
#include "QUORConfig.h"
#include "QUORVisualization.h"

#include <vtkDataSet.h>

#include <cmath>

QUORViewerSession::QUORViewerSession(QUORDataStore::Ptr store)
    : _store(std::move(store)),
      _general(std::make_shared<QUORGeneralSettings>()),
      _state(std::make_shared<QUORDisplayState>()),
      _loader(std::make_unique<QUORFrameLoader>()) {
    createVisualization();
}

QUORViewerSession::~QUORViewerSession() {
    _loader.reset();
    _visualization->abort();
}

void QUORViewerSession::createVisualization() {
    _visualization = std::make_unique<QUORVisualization>(this);
    _visualization->setHardware(_hardware);
}

void QUORViewerSession::setHardware(bool hardware) {
    _hardware = hardware;
    _visualization->setHardware(hardware);
}

void QUORViewerSession::show(const QUORFileLeaf::CPtr& leaf, const QUORFileLeaf::CPtr& next) {
    _wanted = leaf;
    _next = next;
    _failedAhead = nullptr;
    proceed();
}

void QUORViewerSession::reload() {
    if (_wanted) {
        _isOutdated = true;
        _ahead = {};
        proceed();
    }
}

void QUORViewerSession::cancel() {
    if (!_isBusy) {
        return;
    }
    ++_serial;
    _isLoading = false;
    if (_isBuilding) {
        _visualization->abort();
        createVisualization();
        _isBuilding = false;
    }
    _underWay = {};
    _next = nullptr;
    _wanted = _shown.leaf;
    _isOutdated = false;
    _shown.revision = _revision; // the user wants no more of it
    setBusy(false);
}

void QUORViewerSession::changed() {
    ++_revision;
    proceed();
}

// One thing at a time: what comes to its end looks here for the next.
void QUORViewerSession::proceed() {
    if (_isBuilding || _isLoading) {
        setBusy(_isBusy || !_shown.serves(_wanted, _revision));
        return;
    }
    if (_wanted && (_isOutdated || !_shown.serves(_wanted, _revision))) {
        if (_ahead.serves(_wanted, _revision)) {
            const QUORViewerScene ahead = _ahead;
            _ahead = {};
            present(ahead);
            return;
        }
        setBusy(true);
        start(_wanted);
        return;
    }
    setBusy(false);
    if (_next && _next != _wanted && _next != _failedAhead && !_ahead.serves(_next, _revision)) {
        start(_next);
    }
}

void QUORViewerSession::start(const QUORFileLeaf::CPtr& leaf) {
    if (_shown.frame && _shown.leaf == leaf && !_isOutdated) {
        build(_shown);
        return;
    }
    const QUORBackgroundSettings background;
    const QUORFrameLoader::Order order{_store, leaf, settingsOf(*leaf),
                                       background.get2DProduct(leaf->getConfiguration()),
                                       _general->getTimeWindow()};
    _isLoading = true;
    _isOutdated = false;
    const auto done = [this, leaf, serial = ++_serial](const QUORViewerScene& scene, const QString& error) {
        if (serial != _serial) {
            return;
        }
        _isLoading = false;
        if (!error.isEmpty()) {
            giveUp(leaf, error);
        } else {
            build(scene);
        }
    };
    _loader->load(order, done);
}

void QUORViewerSession::build(const QUORViewerScene& scene) {
    _underWay = scene;
    _underWay.item = nullptr;
    _underWay.revision = _revision;
    _underWay.frame->setProductSettings(settingsOf(*scene.leaf));
    _isBuilding = true;
    _visualization->setSourceData(_underWay.frame);
    _visualization->updateVisualization(false);
}

void QUORViewerSession::visualizationFinished(QUORVisualization* visualization) {
    QUORViewerScene scene = _underWay;
    _underWay = {};
    _isBuilding = false;
    scene.item = visualization->getVisualizationResult();
    if (!scene.item || !visualization->getVTKDataSet()) {
        giveUp(scene.leaf, tr("its scene could not be built"));
    } else if (scene.leaf == _wanted) {
        present(scene);
    } else {
        _ahead = scene;
        proceed();
    }
}

void QUORViewerSession::present(const QUORViewerScene& scene) {
    _shown = scene;
    Q_EMIT sceneChanged();
    proceed();
}

void QUORViewerSession::giveUp(const QUORFileLeaf::CPtr& leaf, const QString& reason) {
    if (leaf != _wanted) {
        _failedAhead = leaf;
        proceed();
        return;
    }
    _wanted = _shown.leaf;
    _next = nullptr;
    if (_shown.isComplete()) {
        _shown.revision = _revision; // else the same would be tried for ever
    }
    setBusy(false);
    Q_EMIT failed(leaf->getPath(), reason);
}

void QUORViewerSession::setBusy(bool busy) {
    if (busy != _isBusy) {
        _isBusy = busy;
        Q_EMIT busyChanged(busy);
    }
}

QUORProductSettings::Ptr QUORViewerSession::settingsOf(const QUORFileLeaf& leaf) {
    QUORProductSettings::Ptr& settings =
        _products[leaf.getProduct() + QLatin1Char(' ') + leaf.getConfiguration()];
    if (!settings) {
        settings = std::make_shared<QUORProductSettings>(leaf.getProduct(), leaf.getConfiguration(),
                                                         leaf.getFile()->getDataType(),
                                                         QUORProductSettings::NotSaved);
    }
    return settings;
}

void QUORViewerSession::setVerticalScale(double scale) {
    if (std::isfinite(scale) && scale > 0.0 && scale != _general->getVerticalScale()) {
        // A build may be reading the old record.
        _general = std::make_shared<QUORGeneralSettings>(*_general);
        _general->setVerticalScale(scale);
        changed();
    }
}

void QUORViewerSession::setDisplayState(const QUORDisplayState& state) {
    _state->copyState(state);
    Q_EMIT displayStateChanged();
    changed();
}

void QUORViewerSession::setVisible(int key, bool visible) {
    const QUORDisplayLayer::Ptr layer = _state->getLayer(key);
    if (layer && layer->isVisible() != visible) {
        layer->setVisible(visible);
        Q_EMIT displayStateChanged();
        changed();
    }
}

void QUORViewerSession::setOpacity(int key, int opacity) {
    const QUORDisplayLayer::Ptr layer = _state->getLayer(key);
    if (layer && layer->getOpacity() != opacity) {
        layer->setOpacity(opacity);
        Q_EMIT displayStateChanged();
    }
}

QUORProductSettings::CPtr QUORViewerSession::getProductSettings() const {
    return _shown.frame ? _shown.frame->getProductSettings() : nullptr;
}

void QUORViewerSession::setProductSettings(const QUORProductSettings& settings) {
    _products[settings.getProduct() + QLatin1Char(' ') + settings.getConfiguration()] =
        std::make_shared<QUORProductSettings>(settings);
    changed();
}

void QUORViewerSession::readSettings() {
    _general = std::make_shared<QUORGeneralSettings>();
    _products.clear();
    changed();
}

void QUORViewerSession::saveProductSettings() const {
    if (const QUORProductSettings::CPtr settings = getProductSettings()) {
        settings->save();
    }
}

QUORGeneralSettings::CPtr QUORViewerSession::getVisualizationGeneralSettings() {
    return _general;
}

QUORDisplayState::CPtr QUORViewerSession::getVisualizationDisplayState() {
    return _state;
}
