// SPDX-License-Identifier: MIT
// What an import costs: a volume of fifteen sweeps in super resolution, from the packed file to the products.
#include "Level2Writer.h"
#include "QUORImporter.h"
#include "QUORReaderProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sys/resource.h>
#include <vector>

namespace {

constexpr int RUNS = 5;
constexpr double ELEVATIONS[] = {0.5, 0.9, 1.3,  1.8,  2.4,  3.1,  4.0, 5.1,
                                 6.4, 8.0, 10.0, 12.5, 15.6, 17.5, 19.5};

/// A storm with noise in it, as packed data have.
unsigned int code(double azimuth, double range, int gate, unsigned int seed) {
    const double storm = 90.0 * std::exp(-std::pow((range - 90.0) / 25.0, 2.0)) * std::cos(azimuth * 0.05);
    unsigned int noise = unsigned(gate) * 2654435761U + seed * 2246822519U;
    noise = (noise ^ noise >> 15) * 3266489917U;
    return storm > 2.0 ? unsigned(66.0 + storm) + (noise >> 28) : 0U;
}

QByteArray makeVolume() {
    Level2Writer writer("KTST", QDateTime(QDate(2024, 6, 1), QTime(12, 0), Qt::UTC), 33.65F, -101.81F, 1000,
                        24);
    int number = 0;
    for (const double elevation : ELEVATIONS) {
        ++number;
        for (int i = 0; i < 720; ++i) {
            Level2Writer::Ray ray;
            ray.azimuth = float(i * 0.5 + 0.25);
            ray.elevation = float(elevation);
            ray.elevationNumber = number;
            ray.status = i == 0 ? (number == 1 ? 3 : 0) : (number == 15 && i == 719 ? 4 : 1);
            ray.nyquist = 28.0;
            ray.unambiguousRange = 140000.0;
            const auto moment = [&](const char* name, int gates) {
                return Level2Writer::Moment{
                    name, gates, 2125, 250, 8, 2.0F, name[0] == 'R' ? 66.0F : 129.0F, [i, number](int gate) {
                        return code(i * 0.5, 2.125 + 0.25 * gate, gate, unsigned(i + number));
                    }};
            };
            ray.moments = {moment("REF", 1832), moment("VEL", 1192), moment("SW ", 1192)};
            writer.add(ray);
        }
    }
    return writer.toBytes();
}

/// Of this process and of those that read, seconds.
double processorTime() {
    double seconds = 0.0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
            seconds += double(time.tv_sec) + double(time.tv_usec) / 1e6;
        }
    }
    return seconds;
}

double mebibytes(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

} // namespace

/// With the path of a file: that one instead.
int main(int argc, char** argv) {
    const QTemporaryDir folder;
    QString path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : folder.filePath(QStringLiteral("volume"));
    if (argc < 2) {
        QFile file(path);
        const QByteArray volume = makeVolume();
        if (!file.open(QIODevice::WriteOnly) || file.write(volume) != volume.size()) {
            std::fprintf(stderr, "import_bench: %s\n", qPrintable(file.errorString()));
            return 1;
        }
        std::printf("15 sweeps of 720 rays, Z of 1832 gates, V and W of 1192: %.1f MB packed\n",
                    double(volume.size()) / 1e6);
    }
    QUORImportOptions options;
    options.folder3d = folder.filePath(QStringLiteral("3d"));
    options.folder2d = folder.filePath(QStringLiteral("2d"));
    options.grid.points = {240, 240, 24};
    options.grid.steps = {2000.0, 2000.0, 500.0};
    QUORImporter importer(options);
    std::vector<double> reading;
    std::vector<double> whole;
    const double before = processorTime();
    for (int run = 0; run < RUNS; ++run) {
        QElapsedTimer watch;
        watch.start();
        const QUORRadarData data = QUORReaderProcess().read(path);
        reading.push_back(double(watch.nsecsElapsed()) / 1e9);
        importer.import(data);
        whole.push_back(double(watch.nsecsElapsed()) / 1e9);
    }
    std::sort(reading.begin(), reading.end());
    std::sort(whole.begin(), whole.end());
    std::printf(
        "read and 8 products of 240 x 240 x 24 written: %.2f s median, %.2f s best; of that reading %.2f s\n",
        whole[RUNS / 2], whole.front(), reading[RUNS / 2]);
    std::printf("processor time %.2f s each, which two cores can share\n", (processorTime() - before) / RUNS);
    std::printf("memory at most: %.0f MiB, and %.0f MiB in the process that reads\n", mebibytes(RUSAGE_SELF),
                mebibytes(RUSAGE_CHILDREN));
    return 0;
}
