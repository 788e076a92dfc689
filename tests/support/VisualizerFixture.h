// SPDX-License-Identifier: MIT
#pragma once

#include "OffscreenScene.h"
#include "QUOROffscreenVisualizer.h"
#include "ScratchHome.h"
#include "TestStore.h"

#include <QFile>

#include <atomic>
#include <thread>

/// An offscreen visualizer over product folders of its own, driven as the live data thread drives it.
class VisualizerFixture : public OffscreenScene {
protected:
    VisualizerFixture() {
        qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(ScratchHome::settingsDirectory() + "/bg.conf"));
    }
    ~VisualizerFixture() override { qunsetenv("QUOR3D_BG_SETTINGS"); }

    /// A small picture, and what else the background settings shall hold.
    static void writeBackground(const QString& more, int width = 480, int height = 360) {
        ScratchHome::writeSettings(
            QStringLiteral("bg.conf"),
            QStringLiteral("[BACKGROUND]\nwidth=%1\nheight=%2\n").arg(width).arg(height) + more);
    }

    QString output(const char* name) const { return _store.folder(name); }

    /// Runs one job as the live data thread does. False when it was refused or did not end in time.
    bool render(QUOROffscreenVisualizer& visualizer, const QUORDataFrame::Ptr& frame,
                const QString& path) const {
        std::atomic<int> result{-1};
        std::thread job([&] {
            visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
            bool rendered = visualizer.canVisualize(frame, false);
            if (rendered) {
                visualizer.startVisualization(frame, path);
                rendered = visualizer.waitUntilReady() == QUOROffscreenVisualizer::Written;
            }
            result = rendered ? 1 : 0;
        });
        EXPECT_TRUE(waitUntil([&] { return result >= 0; }, 60000)) << "the job hangs";
        job.join();
        return result == 1;
    }

    TestStore _store;

private:
    /// Of its own, because what was read of a settings file that goes stays in force.
    ScratchHome _home;
};
