// SPDX-License-Identifier: MIT
#include "ImportReport.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <iostream>
#include <unistd.h>

namespace {

QString angle(double degrees, char positive, char negative) {
    return QString::number(std::abs(degrees), 'f', 4) + QLatin1Char(' ') +
           QLatin1Char(degrees < 0.0 ? negative : positive);
}

QString namesOf(const QStringList& files) {
    return files.size() == 1 ? files.first()
                             : files.first() + QStringLiteral(" and %1 more").arg(files.size() - 1);
}

/// From the lowest to the highest, without a file's own order.
QString describeSweeps(const QUORRadarData& data) {
    double lowest = 90.0;
    double highest = -90.0;
    for (const QUORRadarSweep& sweep : data.sweeps) {
        lowest = std::min(lowest, sweep.fixedAngle);
        highest = std::max(highest, sweep.fixedAngle);
    }
    return QStringLiteral("%1 sweeps from %2 to %3 degrees")
        .arg(data.sweeps.size())
        .arg(lowest, 0, 'f', 1)
        .arg(highest, 0, 'f', 1);
}

QString describeShape(const QUORGridShape& shape) {
    return QStringLiteral("%1 x %2 x %3 points, steps of %4 m, %5 m, %6 m")
        .arg(shape.points[0])
        .arg(shape.points[1])
        .arg(shape.points[2])
        .arg(shape.steps[0])
        .arg(shape.steps[1])
        .arg(shape.steps[2]);
}

QJsonObject toJson(const QUORRadarSweep& sweep) {
    QJsonArray fields;
    for (const QUORRadarMoment& moment : sweep.moments) {
        fields.append(moment.name);
    }
    return {{"elevation", sweep.fixedAngle},
            {"rays", int(sweep.azimuths.size())},
            {"nyquist", sweep.nyquist},
            {"fields", fields}};
}

template <class Numbers>
QJsonArray toJsonArray(const Numbers& numbers) {
    QJsonArray array;
    for (const auto number : numbers) {
        array.append(number);
    }
    return array;
}

} // namespace

void ImportReport::volume(const QStringList& files, const QUORRadarData& data,
                          const QUORImportResult& result) {
    clearBar();
    for (const QString& warning : result.warnings) {
        std::cerr << "quor3d import: " << namesOf(files).toStdString() << ": " << warning.toStdString()
                  << '\n';
    }
    if (_json) {
        printJson(files, data, result);
    } else if (_dryRun) {
        describe(files, data, result);
    } else {
        for (const QUORImportedProduct& product : result.products) {
            std::cout << product.path.toStdString() << '\n';
        }
    }
    std::cout.flush();
}

void ImportReport::describe(const QStringList& files, const QUORRadarData& data,
                            const QUORImportResult& result) {
    QStringList lines;
    lines << namesOf(files) + QStringLiteral(": ") + data.format;
    lines << QStringLiteral("  site      %1, %2, %3, antenna %4 m over the sea")
                 .arg(result.site, angle(data.site.latitude, 'N', 'S'), angle(data.site.longitude, 'E', 'W'))
                 .arg(data.site.altitude, 0, 'f', 0);
    lines << QStringLiteral("  time      ") + data.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"));
    if (!data.grid) {
        lines << QStringLiteral("  scan      ") + describeSweeps(data);
    }
    lines << QStringLiteral("  grid      ") + describeShape(result.shape);
    if (!data.leftOut.isEmpty()) {
        lines << QStringLiteral("  left out  ") + data.leftOut.join(QStringLiteral(", "));
    }
    for (const QUORImportedProduct& product : result.products) {
        lines << QStringLiteral("  %1  %2  from %3")
                     .arg((product.product + QLatin1Char(' ') + product.configuration).leftJustified(8),
                          product.path, product.source);
    }
    std::cout << lines.join(QLatin1Char('\n')).toStdString() << '\n';
}

void ImportReport::printJson(const QStringList& files, const QUORRadarData& data,
                             const QUORImportResult& result) {
    QJsonArray sweeps;
    for (const QUORRadarSweep& sweep : data.sweeps) {
        sweeps.append(toJson(sweep));
    }
    QJsonArray products;
    for (const QUORImportedProduct& product : result.products) {
        products.append(QJsonObject{{"product", product.product},
                                    {"configuration", product.configuration},
                                    {"path", product.path},
                                    {"source", product.source}});
    }
    const QJsonObject object{{"files", QJsonArray::fromStringList(files)},
                             {"format", data.format},
                             {"site", result.site},
                             {"latitude", data.site.latitude},
                             {"longitude", data.site.longitude},
                             {"altitude", data.site.altitude},
                             {"time", data.time.toString(Qt::ISODate)},
                             {"wavelength", data.wavelength},
                             {"sweeps", sweeps},
                             {"grid", QJsonObject{{"points", toJsonArray(result.shape.points)},
                                                  {"steps", toJsonArray(result.shape.steps)},
                                                  {"radar", toJsonArray(result.shape.radar)}}},
                             {"leftOut", QJsonArray::fromStringList(data.leftOut)},
                             {"products", products},
                             {"written", !_dryRun},
                             {"warnings", QJsonArray::fromStringList(result.warnings)}};
    std::cout << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString() << '\n';
}

void ImportReport::failure(const QStringList& files, const QString& reason) {
    clearBar();
    _failed = true;
    std::cerr << "quor3d import: " << namesOf(files).toStdString() << ": " << reason.toStdString() << '\n';
    if (_json) {
        const QJsonObject object{{"files", QJsonArray::fromStringList(files)}, {"error", reason}};
        std::cout << QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString() << std::endl;
    }
}

void ImportReport::progress(int done, int all) {
    constexpr int width = 40;
    if (all < 2 || ::isatty(STDERR_FILENO) == 0) {
        return;
    }
    const auto filled = std::size_t(width * done / all);
    std::cerr << "\r[" << std::string(filled, '#') << std::string(width - filled, ' ') << "] " << done
              << " of " << all << std::flush;
    _hasBar = true;
    if (done == all) {
        clearBar();
    }
}

void ImportReport::clearBar() {
    if (_hasBar) {
        std::cerr << "\r\033[K" << std::flush;
        _hasBar = false;
    }
}
