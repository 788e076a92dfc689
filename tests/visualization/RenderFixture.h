// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataFrame.h"
#include "QUORRenderWindowFactory.h"
#include "TestProduct.h"

#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <vtkGenericRenderWindowInteractor.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkUnsignedCharArray.h>

#include <gtest/gtest.h>

#include <memory>

/// Product folders with a data store over them.
class TestStore {
public:
    TestStore() : _store(std::make_shared<QUORDataStore>(nullptr)) {
        for (const char* name : {"3d", "2d", "geo"}) {
            QDir().mkpath(folder(name));
        }
        _store->setDirectories(folder("3d"), folder("2d"), folder("geo"), folder("cache"));
    }

    QString folder(const char* name) const { return _dir.filePath(QLatin1String(name)); }

    /// The frame of a product file that is written first; without 2D data unless some is there.
    QUORDataFrame::Ptr frame(const TestProduct& product) const {
        const QString name = QFileInfo(product.write(folder("3d"))).fileName();
        QElapsedTimer timer;
        timer.start();
        QUORFileLeaf::CPtr leaf;
        while (!(leaf = _store->get3DTop()->findLeaf(name)) && timer.elapsed() < 10000) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
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

/// An offscreen window with an interactor that never draws by itself; null where there is no OpenGL.
struct TestWindow {
    TestWindow(int width, int height) : window(QUORRenderWindowFactory::create(error)) {
        if (window == nullptr) {
            return;
        }
        window->SetSize(width, height);
        interactor->SetRenderWindow(window);
        interactor->EnableRenderOff();
        interactor->Initialize();
        interactor->EnableRenderOn();
    }

    QColor pixel(int x, int y) const {
        vtkNew<vtkUnsignedCharArray> data;
        window->GetPixelData(x, y, x, y, 0, data, 0);
        return QColor(data->GetValue(0), data->GetValue(1), data->GetValue(2));
    }

    QString error;
    vtkSmartPointer<vtkOpenGLRenderWindow> window;
    vtkNew<vtkGenericRenderWindowInteractor> interactor;
};

/// "rgb" within a tolerance, for EXPECT_PRED-free readable checks.
inline testing::AssertionResult isColor(const QColor& actual, int r, int g, int b, int tolerance = 2) {
    const bool same = std::abs(actual.red() - r) <= tolerance && std::abs(actual.green() - g) <= tolerance &&
                      std::abs(actual.blue() - b) <= tolerance;
    return (same ? testing::AssertionSuccess() : testing::AssertionFailure())
           << qPrintable(actual.name()) << " against " << r << ", " << g << ", " << b;
}

/// Runs tests of this program in a process of its own with an environment of its own: success when they
/// passed, and none was skipped.
inline testing::AssertionResult passesAlone(const char* filter, const QStringList& environment) {
    QProcess child;
    child.setEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QStringLiteral("/proc/%1/exe").arg(QCoreApplication::applicationPid()),
                {QStringLiteral("--gtest_also_run_disabled_tests"),
                 QStringLiteral("--gtest_filter=%1").arg(QLatin1String(filter))});
    const bool ended = child.waitForFinished(60000) && child.exitStatus() == QProcess::NormalExit;
    const QByteArray output = child.readAll();
    const bool passed = ended && child.exitCode() == 0 && output.contains("[  PASSED  ] ") &&
                        !output.contains("[  PASSED  ] 0") && !output.contains("[  SKIPPED ]");
    return passed ? testing::AssertionSuccess() : testing::AssertionFailure() << output.constData();
}
