// SPDX-License-Identifier: MIT
#pragma once

#include "QUORViewerScene.h"

#include <QObject>
#include <QThread>

#include <functional>

/// Reads what a scene is made of on a thread of its own: headers, values, terrain and landmarks. Belongs to
/// the thread that made it, which runs an event loop and is told there.
class QUORFrameLoader : public QObject {
    Q_OBJECT

public:
    struct Order {
        QUORDataStore::Ptr store;
        QUORFileLeaf::CPtr leaf;
        QUORProductSettings::Ptr productSettings;
        QString product2d; ///< preferred; another one is taken where there is none of it
        int timeWindow = 0;
    };
    /// The scene has no frame when the product cannot be shown; `error` says why.
    using Done = std::function<void(const QUORViewerScene& scene, const QString& error)>;

    QUORFrameLoader();
    /// Waits for what is being read, and tells nobody.
    ~QUORFrameLoader() override;

    /// Orders are served one after the other.
    void load(const Order& order, const Done& done);

private:
    QThread _thread;
    QObject* _worker; ///< lives in the thread
};
