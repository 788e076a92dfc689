// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBackgroundSettings.h"
#include "QUORServiceReport.h"
#include "QUORSettingsWatch.h"

#include <QObject>
#include <QString>

#include <memory>

class QUORDataStore;

/// Tells a supervisor and a monitoring system how the service does: a metrics file and a status file, each
/// replaced whole after every image and every minute, and under systemd that it is ready, a status line and
/// the watchdog. The watchdog is fed by the event loop, and only while no job runs longer than the job limit
/// of the background settings. What is wrong with the settings files is said at the start and within a minute
/// of a change.
///
/// Made on the main thread when the service has started, and destroyed before it stops.
class QUORServiceMonitor : public QObject {
    Q_OBJECT

public:
    struct Files {
        QString metrics; ///< empty: what the background settings name, if anything
        QString status;
    };

    /// Says in the log what is watched and written, and tells systemd that the service is ready.
    QUORServiceMonitor(std::shared_ptr<const QUORDataStore> store, const QString& version, Files files);
    ~QUORServiceMonitor() override;

    /// In the run-time directory that systemd provides, otherwise in the service's own directory.
    static QString getDefaultStatusFile();

private:
    void startWatchdog();
    void feedWatchdog();
    void update();
    void look();
    void write();
    QUORServiceReport makeReport() const;

    std::shared_ptr<const QUORDataStore> _store;
    QString _version;
    Files _files;
    QUORBackgroundSettings _settings; ///< as of the last minute
    QUORSettingsWatch _settingsWatch;
    bool _isStuck = false;
};
