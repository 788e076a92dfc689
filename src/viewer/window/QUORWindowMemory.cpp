// SPDX-License-Identifier: MIT
#include "QUORWindowMemory.h"

#include "QUORSystem.h"

#include <QMainWindow>
#include <QSettings>

namespace {

const QString FILE_NAME = QStringLiteral("QUOR3DView");
const QString GEOMETRY = QStringLiteral("window/geometry");
const QString PANELS = QStringLiteral("window/panels");
/// To be counted up when the panels change so that an older arrangement makes no sense.
constexpr int ARRANGEMENT = 1;

} // namespace

namespace QUORWindowMemory {

bool restore(QMainWindow& window) {
    const QSettings settings(QUORSystem::ORGANIZATION_NAME, FILE_NAME);
    return window.restoreGeometry(settings.value(GEOMETRY).toByteArray()) &&
           window.restoreState(settings.value(PANELS).toByteArray(), ARRANGEMENT);
}

void store(const QMainWindow& window) {
    QSettings settings(QUORSystem::ORGANIZATION_NAME, FILE_NAME);
    settings.setValue(GEOMETRY, window.saveGeometry());
    settings.setValue(PANELS, window.saveState(ARRANGEMENT));
}

} // namespace QUORWindowMemory
