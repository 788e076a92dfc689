// SPDX-License-Identifier: MIT
// ODIM_H5, CfRadial and gridded netCDF: whole files whose attributes and variables are other than they should
// be. What damaged bytes do to the libraries underneath stays in the process that reads a file.
#include "FuzzScratch.h"
#include "QUORImportError.h"
#include "QUORRadarReader.h"
#include "QUORVolumeGridder.h"
#include "RadarFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <bit>
#include <cstring>

namespace {

constexpr const char* GROUPS[] = {"",
                                  "what",
                                  "where",
                                  "how",
                                  "dataset1/what",
                                  "dataset1/where",
                                  "dataset1/how",
                                  "dataset2/where",
                                  "dataset2/how",
                                  "dataset2/data3/what",
                                  "sweep_A",
                                  "sweep_B"};
constexpr const char* ATTRIBUTES[] = {"nrays",
                                      "nbins",
                                      "rscale",
                                      "rstart",
                                      "elangle",
                                      "gain",
                                      "offset",
                                      "nodata",
                                      "undetect",
                                      "NI",
                                      "startazA",
                                      "stopazA",
                                      "object",
                                      "date",
                                      "time",
                                      "lat",
                                      "height",
                                      "quantity",
                                      "astart",
                                      "elangles",
                                      "wavelength",
                                      "frequency",
                                      "time_coverage_start",
                                      "site_name"};
constexpr const char* VARIABLES[] = {"sweep_mode", "ray_n_gates", "ray_start_index", "radar_latitude", "crs",
                                     "frequency2", "prt2",        "altitude2"};

class Recipe {
public:
    explicit Recipe(QByteArrayView bytes) : _bytes(bytes) {}
    bool isEnd() const { return _bytes.isEmpty(); }
    unsigned char byte() {
        const unsigned char first = _bytes.isEmpty() ? 0 : static_cast<unsigned char>(_bytes.front());
        _bytes = _bytes.sliced(_bytes.isEmpty() ? 0 : 1);
        return first;
    }
    double number() {
        quint64 bits = 0;
        for (int i = 0; i < 8; ++i) {
            bits = bits << 8 | byte();
        }
        return (bits & 0xff) % 3 == 0 ? std::bit_cast<double>(bits) : double(bits % 1000) - 200.0;
    }
    template <std::size_t N>
    const char* pick(const char* const (&names)[N]) {
        return names[byte() % N];
    }

private:
    QByteArrayView _bytes;
};

void spoil(NetcdfMaker& file, Recipe& recipe) {
    for (int i = 0; i < 8 && !recipe.isEnd(); ++i) {
        try {
            const char* group = recipe.pick(GROUPS);
            switch (recipe.byte() % 4) {
            case 0:
                file.number(group, recipe.pick(ATTRIBUTES), recipe.number());
                break;
            case 1:
                file.numbers(group, recipe.pick(ATTRIBUTES), std::vector<double>(12, recipe.number()));
                break;
            case 2:
                file.text(group, recipe.pick(ATTRIBUTES),
                          std::string(recipe.byte() % 20, char(recipe.byte())));
                break;
            default:
                file.doubles(group, recipe.pick(VARIABLES), {{"sweep", 2}},
                             {recipe.number(), recipe.number()});
                file.of("grid_mapping_name", "lambert_conformal_conic")
                    .of("standard_parallel", recipe.number());
            }
        } catch (const std::runtime_error&) {
            continue; // the library does not write that
        }
    }
}

void read(const QString& path) {
    const int file = ::open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC);
    try {
        const QUORRadarData data = QUORRadarReader::read(file);
        QUORGridRequest request;
        request.points = {8, 6, 4};
        const QUORVolumeGridder gridder(data, request, QUORBetweenBeams::Decibel);
        for (const QUORRadarQuantity quantity : QUORRadarQuantities::ALL) {
            FUZZ_REQUIRE(!data.has(quantity) || gridder.grid(quantity).size() == gridder.getShape().count());
        }
    } catch (const QUORImportError& error) {
        FUZZ_REQUIRE(!error.getReason().isEmpty());
    }
    ::close(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using Write = void (*)(const QString&, const RadarFiles::Spoil&);
    constexpr Write writers[] = {
        [](const QString& path, const RadarFiles::Spoil& f) { RadarFiles::writeOdim(path, f); },
        RadarFiles::writeCfRadial1, RadarFiles::writeCfRadial2, RadarFiles::writeGrid};
    const QByteArray bytes = fuzzBytes(data, size);
    Recipe recipe(bytes);
    const QString path = FuzzScratch::instance().write(QStringLiteral("volume"), {});
    const Write write = writers[recipe.byte() % std::size(writers)];
    write(path, [&recipe](NetcdfMaker& file) { spoil(file, recipe); });
    read(path);
    return 0;
}
