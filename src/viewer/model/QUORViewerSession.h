// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFrameLoader.h"
#include "QUORVisualizationObserver.h"

#include <QMap>
#include <QObject>

#include <memory>

class QUORVisualization;

/// What a viewer shows, without a window: the wanted product is read and built while the present one stays,
/// then the next one ahead of its time. Display settings are changed here; the scene follows.
///
/// Belongs to the rendering thread, which runs an event loop; all that was drawn must be let go of before it
/// dies.
class QUORViewerSession : public QObject, public QUORVisualizationObserver {
    Q_OBJECT

public:
    explicit QUORViewerSession(QUORDataStore::Ptr store);
    ~QUORViewerSession() override;

    /// Whether a graphics card draws the scenes; before the first one.
    void setHardware(bool hardware);

    /// The product to show, and the one to have ready after it; either may be null.
    void show(const QUORFileLeaf::CPtr& leaf, const QUORFileLeaf::CPtr& next = {});
    /// The same product read again, since the files beside it have changed.
    void reload();
    /// Leaves the present scene, and gives up what is under way.
    void cancel();
    /// Empty until the first scene.
    const QUORViewerScene& getScene() const { return _shown; }
    /// The wanted scene is not there yet.
    bool isBusy() const { return _isBusy; }
    bool hasAhead() const { return _ahead.isComplete(); }

    QUORGeneralSettings::CPtr getGeneralSettings() const { return _general; }
    /// Of a height.
    void setVerticalScale(double scale);
    const QUORDisplayState& getDisplayState() const { return *_state; }
    void setDisplayState(const QUORDisplayState& state);
    void setVisible(int key, bool visible);
    /// Percent. The scene is not built anew for it.
    void setOpacity(int key, int opacity);
    /// Of the shown product; null without one.
    QUORProductSettings::CPtr getProductSettings() const;
    void setProductSettings(const QUORProductSettings& settings);
    /// Reads all settings again and forgets what was changed here, display state apart.
    void readSettings();
    /// For all scenes of that product, to the file that the service reads.
    void saveProductSettings() const;

    void visualizationFinished(QUORVisualization* visualization) override;
    QUORGeneralSettings::CPtr getVisualizationGeneralSettings() override;
    QUORDisplayState::CPtr getVisualizationDisplayState() override;

Q_SIGNALS:
    /// The present scene is another one, or shows something else.
    void sceneChanged();
    /// Opacity or visibility of a layer has changed.
    void displayStateChanged();
    void busyChanged(bool busy);
    /// A wanted product that cannot be shown.
    void failed(const QString& product, const QString& reason);

private:
    void changed();
    void proceed();
    void start(const QUORFileLeaf::CPtr& leaf);
    void build(const QUORViewerScene& scene);
    void present(const QUORViewerScene& scene);
    void giveUp(const QUORFileLeaf::CPtr& leaf, const QString& reason);
    void setBusy(bool busy);
    void createVisualization();
    QUORProductSettings::Ptr settingsOf(const QUORFileLeaf& leaf);

    QUORDataStore::Ptr _store;
    QUORGeneralSettings::Ptr _general;
    QUORDisplayState::Ptr _state;
    QMap<QString, QUORProductSettings::Ptr> _products; ///< by product and configuration
    bool _hardware = false;
    int _revision = 0;
    int _serial = 0; ///< of orders; older ones are nobody's any more
    bool _isBusy = false;
    bool _isLoading = false;
    bool _isOutdated = false; ///< the wanted product is to be read again
    bool _isBuilding = false;
    QUORFileLeaf::CPtr _wanted;
    QUORFileLeaf::CPtr _next;
    QUORFileLeaf::CPtr _failedAhead;
    QUORViewerScene _shown;
    QUORViewerScene _ahead;
    QUORViewerScene _underWay;
    std::unique_ptr<QUORVisualization> _visualization;
    std::unique_ptr<QUORFrameLoader> _loader;
};
