// SPDX-License-Identifier: MIT
// Frame times of the viewer over one product, and its memory over many time steps.
#include "QUORLog.h"
#include "QUORSceneView.h"
#include "QUORSystem.h"
#include "QUORViewerWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <malloc.h>
#include <unistd.h>

namespace {

constexpr int PATIENCE_MS = 120000;
constexpr int FRAMES = 60;

/// Resident memory in MiB.
double residentMemory() {
    ::malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    return file.readAll().split(' ').value(1).toDouble() * double(::sysconf(_SC_PAGESIZE)) / 1048576.0;
}

bool waitForScene(QUORViewerWindow& window) {
    return QTest::qWaitFor(
        [&] { return window.getSession().getScene().isComplete() && !window.getSession().isBusy(); },
        PATIENCE_MS);
}

void printFrames(const char* name, QList<double> times) {
    if (times.isEmpty()) {
        return;
    }
    std::sort(times.begin(), times.end());
    std::printf("%-28s median %6.1f ms, nine in ten below %6.1f ms, longest %6.1f ms (%d frames)\n", name,
                times.at(times.size() / 2), times.at(times.size() * 9 / 10), times.last(), int(times.size()));
}

/// Drags the view round and lets it settle.
void measureFrames(QUORViewerWindow& window) {
    QUORSceneView& view = window.getView();
    QList<double> moving;
    QList<double> full;
    QObject::connect(&view, &QUORSceneView::drawn, &view, [&](double milliseconds, bool isMoving) {
        (isMoving ? moving : full).append(milliseconds);
    });
    view.lookFrom(20.0, 30.0);
    QTest::qWait(50);
    full.clear();
    QPoint at = view.rect().center();
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, at);
    for (int i = 0; i < FRAMES; ++i) {
        at += QPoint(i < FRAMES / 2 ? 4 : -4, i % 3 - 1);
        QTest::mouseMove(&view, at);
        QCoreApplication::processEvents();
        view.repaint();
    }
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, at);
    QTest::qWait(1500);
    moving = moving.mid(5); // until the size of the pictures has settled
    printFrames("moving", moving);
    printFrames("settled", full);
    for (int i = 0; i < 5; ++i) {
        view.lookFrom(20.0 + 30.0 * i, 30.0);
        view.repaint();
    }
    printFrames("full, new views", full.mid(1));
    view.disconnect(&view);
}

void measureSteps(QUORViewerWindow& window, int steps) {
    QElapsedTimer watch;
    double first = 0.0;
    watch.start();
    for (int i = 0; i < steps; ++i) {
        window.getTimes().step(1);
        if (!waitForScene(window)) {
            std::printf("a step took too long\n");
            return;
        }
        window.getView().repaint();
        if (i == steps / 10) {
            first = residentMemory();
        }
    }
    std::printf("%d time steps: %.0f ms each, resident %.0f MiB after the first tenth, %.0f MiB at the end\n",
                steps, double(watch.elapsed()) / steps, first, residentMemory());
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: view_bench FILE|DIRECTORY [TERRAIN] [STEPS]\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    QUORLog::Instance().logOpen({});
    QElapsedTimer watch;
    watch.start();
    QUORViewerWindow window({{}, argc > 2 ? QFile::decodeName(argv[2]) : QString()});
    window.show();
    std::printf("window: %lld ms\n", static_cast<long long>(watch.elapsed()));
    window.open(QFile::decodeName(argv[1]));
    if (!waitForScene(window)) {
        std::fprintf(stderr, "no scene: %s\n", qPrintable(window.getMessage()));
        return 1;
    }
    std::printf("first scene: %lld ms\n", static_cast<long long>(watch.elapsed()));
    window.getView().setFixedSize(1200, 900);
    QTest::qWait(300);
    measureFrames(window);
    if (argc > 3) {
        measureSteps(window, QByteArray(argv[3]).toInt());
    }
    return 0;
}
