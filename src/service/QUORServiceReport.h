// SPDX-License-Identifier: MIT
#pragma once

#include "QUORActivity.h"

#include <QByteArray>
#include <QString>

/// What is told about the service to those who watch it: one state of its activity and of what it watches,
/// as metrics and as a status.
struct QUORServiceReport {
    struct Directory {
        QString path;
        qsizetype products = 0;
    };

    QUORActivity::Snapshot activity;
    QString version;
    qint64 pid = 0;
    Directory directory3d;
    Directory directory2d;
    QString output;      ///< directory of the images
    QString imageFormat; ///< by name
    int width = 0;       ///< pixels
    int height = 0;
    qint64 residentBytes = 0;
    qint64 virtualBytes = 0;

    /// Asks the system for the memory of this process.
    void readMemory();

    /// In the Prometheus text exposition format 0.0.4, UTF-8, without time stamps.
    QByteArray toMetrics() const;
    /// As a JSON object, times in UTC as ISO 8601.
    QByteArray toStatus() const;
    /// In one line, for a supervisor.
    QString toLine() const;
};
