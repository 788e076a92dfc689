// SPDX-License-Identifier: MIT
#include "LandmarkWriter.h"
#include "SampleOptions.h"
#include "StormProducts.h"
#include "TerrainWriter.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <exception>

namespace {

constexpr int FAILED = 1;
constexpr int WRONG_USAGE = 2;
constexpr int STEP_SECONDS = 300;
constexpr int TERRAIN_DEGREES = 2;

int fail(const QString& text, int status) {
    std::fprintf(stderr, "quor3d-sample: %s\n", text.toLocal8Bit().constData());
    return status;
}

void announce(const QString& path) {
    std::printf("%s\n", path.toLocal8Bit().constData());
}

int writeProducts(const SampleOptions& options) {
    const SampleProduct& frame = options.frame;
    const double reach = 0.005 * std::min(double(frame.points[0]) * frame.stepsCm[0],
                                          double(frame.points[1]) * frame.stepsCm[1]);
    const StormProducts storm(frame, StormModel(options.seed, reach));
    QString error;
    const auto write = [&](const QString& folder, const SampleProduct& product) {
        const QString path =
            options.output + QLatin1Char('/') + folder + QLatin1Char('/') + ProductWriter::fileName(product);
        error = ProductWriter::write(product, path);
        if (error.isEmpty()) {
            announce(path);
        }
        return error.isEmpty();
    };
    for (int step = 0; step < options.steps; ++step) {
        if (!storm.make(step * STEP_SECONDS, write)) {
            return fail(error, FAILED);
        }
    }
    return 0;
}

int writeTerrain(const SampleOptions& options) {
    const TerrainWriter land(options.seed, options.frame.latitude, options.frame.longitude);
    const QString error = land.writeTiles(options.output, TERRAIN_DEGREES, announce);
    return error.isEmpty() ? 0 : fail(error, FAILED);
}

int writeLandmarks(const SampleOptions& options) {
    QString path;
    const QString error = LandmarkWriter::write(
        options.output,
        LandmarkWriter::makeTowns(options.seed, options.frame.latitude, options.frame.longitude), path);
    if (!error.isEmpty()) {
        return fail(error, FAILED);
    }
    announce(path);
    return 0;
}

int run(const QStringList& arguments) {
    const SampleOptions options = SampleOptions::parse(arguments);
    if (!options.error.isEmpty()) {
        return fail(options.error + QStringLiteral(" See --help."), WRONG_USAGE);
    }
    if (options.help) {
        std::fputs(SampleOptions::helpText().toLocal8Bit().constData(), stdout);
        return 0;
    }
    switch (options.command) {
    case SampleOptions::Command::Products:
        return writeProducts(options);
    case SampleOptions::Command::Terrain:
        return writeTerrain(options);
    case SampleOptions::Command::Landmarks:
        return writeLandmarks(options);
    }
    return FAILED;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const QCoreApplication application(argc, argv);
        return run(QCoreApplication::arguments());
    } catch (const std::exception& reason) {
        return fail(QString::fromLocal8Bit(reason.what()), FAILED);
    }
}
