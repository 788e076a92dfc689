// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataFrame.h"
#include "TestProduct.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

/// Product folders with a data store over them.
class TestStore {
public:
    TestStore() {
        for (const char* name : {"3d", "2d", "geo"}) {
            QDir().mkpath(folder(name));
        }
    }

    QString folder(const char* name) const { return _dir.filePath(QLatin1String(name)); }

    /// Opened at the first call, over what the folders hold by then.
    QUORDataStore::Ptr open() {
        if (!_store) {
            _store = std::make_shared<QUORDataStore>(nullptr);
            _store->setDirectories(folder("3d"), folder("2d"), folder("geo"), folder("cache"));
        }
        return _store;
    }

    /// The frame of a product file that is written first; without 2D data unless some is there.
    QUORDataFrame::Ptr frame(const TestProduct& product) {
        const QString name = QFileInfo(product.write(folder("3d"))).fileName();
        QUORFileLeaf::CPtr leaf;
        waitUntil([&] { return bool(leaf = open()->get3DTop()->findLeaf(name)); });
        if (!leaf) {
            return nullptr;
        }
        auto result = std::make_shared<QUORDataFrame>(_store);
        result->setSite(leaf->getSite());
        result->setMoment(leaf->getTime(), 600);
        result->setDataParams3d(leaf->getProduct(), leaf->getConfiguration());
        result->setDataParams2d(QStringLiteral("SRI"));
        result->setDataParamsTerrain(10000.0);
        result->updateData3d();
        result->updateDataRest();
        return result;
    }

private:
    QTemporaryDir _dir;
    QUORDataStore::Ptr _store;
};
