// SPDX-License-Identifier: MIT
#include "QUORRadarReader.h"

#include "QUORImportError.h"
#include "QUORReaderProcess.h"
#include "RadarFiles.h"
#include "TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <QtEndian>

#include <bzlib.h>
#include <cmath>
#include <sys/mman.h>

namespace {

using Quantity = QUORRadarQuantity;
using testing::HasSubstr;

class QUORRadarReaderTest : public testing::Test {
protected:
    QString path(const char* name) const { return _folder.filePath(QLatin1String(name)); }
    QString write(const QByteArray& bytes) const {
        writeFile(path("file"), bytes);
        return path("file");
    }
    static QUORRadarData read(const QString& path) { return QUORReaderProcess().read(path); }
    static std::string reasonOf(const QString& path, const QUORReaderProcess::Limits& limits = {}) {
        try {
            QUORReaderProcess(limits).read(path);
        } catch (const QUORImportError& error) {
            return error.getReason().toStdString();
        }
        return "was read";
    }

private:
    QTemporaryDir _folder;
};

float valueOf(const QUORRadarSweep& sweep, Quantity quantity, int ray, int gate) {
    const QUORRadarMoment& moment = *sweep.find(quantity);
    return moment.value(moment.codes[std::size_t(ray * moment.gates + gate)]);
}

} // namespace

TEST_F(QUORRadarReaderTest, ReadsOdimVolumes) {
    RadarFiles::writeOdim(path("file"));
    const QUORRadarData data = read(path("file"));
    EXPECT_EQ(data.site.name.toStdString(), "R\u00f8st \u00c5sen");
    EXPECT_EQ(data.site.altitude, 412.0);
    EXPECT_EQ(data.time, QDateTime(QDate(2024, 6, 1), QTime(12, 30, 5), Qt::UTC));
    EXPECT_NEAR(data.wavelength, 0.0533, 1e-9);
    EXPECT_NEAR(data.beamWidth, 1.1, 1e-9);
    EXPECT_FALSE(data.isPiece);
    EXPECT_EQ(data.leftOut, QStringList({"ZDR", "TH"}));
    ASSERT_EQ(data.sweeps.size(), 2U);
    const QUORRadarSweep& even = data.sweeps[0];
    const QUORRadarSweep& read = data.sweeps[1];
    EXPECT_EQ(even.azimuths[0], 15.0F);
    EXPECT_EQ(read.azimuths[0], 335.0F);
    EXPECT_EQ(read.azimuths[1], 305.0F);
    EXPECT_EQ(read.nyquist, 24.5);
    const QUORRadarMoment& moment = *read.find(Quantity::Reflectivity);
    EXPECT_EQ(moment.name, "DBZH");
    EXPECT_EQ(moment.firstGate, 2500.0);
    EXPECT_EQ(moment.gateSpacing, 1000.0);
    EXPECT_TRUE(QUORRadarValue::isNoEcho(valueOf(read, Quantity::Reflectivity, 0, 0)));
    EXPECT_TRUE(QUORRadarValue::isNoData(valueOf(read, Quantity::Reflectivity, 0, 1)));
    EXPECT_EQ(valueOf(read, Quantity::Reflectivity, 3, 4), 36 * 0.5F - 32.0F);
}

TEST_F(QUORRadarReaderTest, ReadsCfRadialOneAndTwo) {
    RadarFiles::writeCfRadial1(path("one"));
    const QUORRadarData one = read(path("one"));
    ASSERT_EQ(one.sweeps.size(), 2U);
    EXPECT_EQ(one.sweeps[1].azimuths.size(), 12U);
    EXPECT_EQ(one.sweeps[1].fixedAngle, 2.0);
    EXPECT_EQ(one.sweeps[1].elevations[0], 2.1F);
    EXPECT_EQ(one.sweeps[0].nyquist, 8.0);
    EXPECT_NEAR(one.sweeps[0].prf, 1000.0, 1e-6);
    EXPECT_NEAR(one.wavelength, 0.05353, 1e-5);
    EXPECT_EQ(one.site.heightOfAntenna, 12.0);
    EXPECT_EQ(one.leftOut, QStringList("ncp"));
    EXPECT_TRUE(QUORRadarValue::isNoData(valueOf(one.sweeps[0], Quantity::Reflectivity, 0, 0)));
    EXPECT_TRUE(QUORRadarValue::isNoEcho(valueOf(one.sweeps[0], Quantity::Reflectivity, 0, 1)));
    EXPECT_NEAR(valueOf(one.sweeps[1], Quantity::Reflectivity, 1, 2), 0.2 * 1402.0 - 10.0, 1e-3);
    // Positive towards the radar in the file.
    EXPECT_NEAR(valueOf(one.sweeps[1], Quantity::Velocity, 1, 2), -14.02, 1e-3);

    RadarFiles::writeCfRadial2(path("two"));
    const QUORRadarData two = read(path("two"));
    ASSERT_EQ(two.sweeps.size(), 2U);
    EXPECT_EQ(two.sweeps[0].fixedAngle, 2.1);
    EXPECT_EQ(two.sweeps[0].find(Quantity::Reflectivity)->firstGate, 2500.0);
    EXPECT_NEAR(valueOf(two.sweeps[0], Quantity::Reflectivity, 4, 3), 0.2 * 403.0 - 10.0, 1e-3);
}

TEST_F(QUORRadarReaderTest, ReadsGridsInAnyOrderAndUnit) {
    RadarFiles::writeGrid(path("file"));
    const QUORRadarData data = read(path("file"));
    ASSERT_TRUE(data.grid);
    EXPECT_EQ(data.site.latitude, -12.25);
    EXPECT_EQ(data.time, QDateTime(QDate(2024, 6, 1), QTime(12, 30, 5), Qt::UTC));
    EXPECT_EQ(data.grid->x, std::vector<double>({-1000.0, 0.0, 1000.0, 2000.0}));
    EXPECT_EQ(data.grid->y, std::vector<double>({-2000.0, 0.0, 2000.0}));
    EXPECT_EQ(data.leftOut, QStringList("ROI"));
    const std::vector<float>& values = data.grid->fields.front().values;
    EXPECT_EQ(values[0], 9.0F); // the last row of the file is the southern one
    EXPECT_TRUE(QUORRadarValue::isNoData(values[5]));
    EXPECT_EQ(values[12 + 11], 16.0F);
}

TEST_F(QUORRadarReaderTest, KnowsUnitsHoweverTheyAreWritten) {
    const std::pair<const char*, double> rows[] = {
        {"Km", 1000.0}, {"Kilometers", 1000.0}, {"km MSL", 1000.0}, {"Meters", 1.0}, {"", 1.0}};
    for (const auto& [unit, factor] : rows) {
        RadarFiles::writeGrid(path("file"),
                              [name = unit](NetcdfMaker& f) { f.variable("x").of("units", name); });
        EXPECT_EQ(read(path("file")).grid->x[3], 2.0 * factor) << unit;
    }
}

TEST_F(QUORRadarReaderTest, TellsLimitsOfPackedFromLimitsOfUnpackedValues) {
    const struct {
        double lowest;
        double highest;
        bool isShort; ///< as the packed values, which are 10 dBZ + 0.1 dBZ * code
        bool isKept;
    } rows[] = {{-30.0, 75.0, false, true},
                {-30.0, 25.0, false, false},
                {-400.0, 650.0, true, true},
                {-400.0, 150.0, true, false}};
    for (const auto& row : rows) {
        RadarFiles::writeGrid(path("file"), [&row](NetcdfMaker& f) {
            f.shorts("", "DBZH", {{"time", 1}, {"z", 2}, {"y", 3}, {"x", 4}}, std::vector<short>(24, 300));
            f.of("scale_factor", 0.1).of("add_offset", 10.0).of("units", "dBZ");
            if (row.isShort) {
                f.ofShort("valid_min", short(row.lowest)).ofShort("valid_max", short(row.highest));
            } else {
                f.of("valid_min", row.lowest).of("valid_max", row.highest);
            }
            f.variable("DT").of("units", "K"); // not the one that is looked at
        });
        const float value = read(path("file")).grid->fields.front().values[0];
        EXPECT_EQ(QUORRadarValue::isNoData(value), !row.isKept) << row.lowest << ' ' << row.highest;
        if (row.isKept) {
            EXPECT_NEAR(value, 40.0, 1e-4);
        }
    }
}

TEST_F(QUORRadarReaderTest, ReadsLevelTwoPackedAndUnpacked) {
    const Level2Writer writer = RadarFiles::makeLevel2();
    for (const bool packed : {true, false}) {
        const QUORRadarData data = read(write(writer.toBytes(packed)));
        ASSERT_EQ(data.sweeps.size(), 3U);
        EXPECT_EQ(data.site.name, "KTST");
        EXPECT_EQ(data.site.altitude, 1024.0);
        EXPECT_NEAR(data.wavelength, 0.1054, 1e-3);
        EXPECT_EQ(data.leftOut, QStringList("ZDR"));
        EXPECT_EQ(data.sweeps[0].azimuths.size(), 720U);
        EXPECT_EQ(data.sweeps[0].find(Quantity::Velocity), nullptr);
        EXPECT_NEAR(data.sweeps[0].fixedAngle, 0.5, 1e-6);
        EXPECT_NEAR(data.sweeps[1].nyquist, 22.56, 1e-6);
        const QUORRadarMoment& moment = *data.sweeps[1].find(Quantity::Velocity);
        EXPECT_EQ(moment.firstGate, 2125.0);
        EXPECT_TRUE(QUORRadarValue::isNoEcho(valueOf(data.sweeps[1], Quantity::Velocity, 7, 0)));
        EXPECT_TRUE(
            QUORRadarValue::isNoData(valueOf(data.sweeps[1], Quantity::Velocity, 7, 1))); // range folded
        EXPECT_EQ(valueOf(data.sweeps[1], Quantity::Velocity, 7, 20), (93.0F - 129.0F) / 2.0F);
    }
}

TEST_F(QUORRadarReaderTest, NamesWhatIsWrong) {
    using Spoil = RadarFiles::Spoil;
    using Write = void (*)(const QString&, const Spoil&);
    const Write odim = [](const QString& file, const Spoil& spoil) { RadarFiles::writeOdim(file, spoil); };
    const double nan = std::nan("");
    const struct {
        Write write;
        Spoil spoil;
        const char* reason;
    } rows[] = {
        {odim, [](NetcdfMaker& f) { f.number("dataset1/where", "nrays", 720.0); },
         "720 rays of 5 gates are announced"},
        {odim, [](NetcdfMaker& f) { f.number("dataset1/where", "nbins", 4e9); },
         "impossible number of rays or gates"},
        {odim, [](NetcdfMaker& f) { f.text("dataset1/where", "rscale", "long"); },
         "where/rscale is missing or no number"},
        {odim, [=](NetcdfMaker& f) { f.number("dataset2/where", "elangle", nan); }, "where/elangle"},
        {odim, [=](NetcdfMaker& f) { f.numbers("dataset2/how", "startazA", std::vector<double>(12, nan)); },
         "no usable azimuth"},
        {odim, [](NetcdfMaker& f) { f.number("dataset1/where", "rscale", -250.0); },
         "impossible range or length of gates"},
        {odim, [](NetcdfMaker& f) { f.text("what", "date", "20241340"); }, "no usable time"},
        {odim, [](NetcdfMaker& f) { f.number("where", "lat", 150.0); }, "no usable position"},
        {odim, [](NetcdfMaker& f) { f.text("what", "object", "COMP"); }, "kind \"COMP\""},
        {RadarFiles::writeCfRadial1, [](NetcdfMaker& f) { f.doubles("", "ray_n_gates", {}, {1.0}); },
         "was read"},
        {RadarFiles::writeCfRadial1,
         [](NetcdfMaker& f) {
             f.characters("", "sweep_mode", {{"sweep", 2}, {"n", 3}}, "rhirhi");
         },
         "only vertical cuts"},
        {RadarFiles::writeGrid, [](NetcdfMaker& f) { f.text("", "Conventions", "CF/Radial"); }, "was read"},
        {RadarFiles::writeGrid, [](NetcdfMaker& f) { f.variable("x").of("units", "furlongs"); },
         "x: unknown unit \"furlongs\""},
    };
    for (const auto& row : rows) {
        row.write(path("spoilt"), row.spoil);
        EXPECT_THAT(reasonOf(path("spoilt")), HasSubstr(row.reason));
    }
    {
        NetcdfMaker file(path("empty.nc"));
        file.doubles("", "x", {{"x", 3}}, {1.0, 2.0, 3.0});
    }
    EXPECT_THAT(reasonOf(path("empty.nc")), HasSubstr("neither ODIM_H5 nor CfRadial"));
    RadarFiles::writeOdim(
        path("none"), [](NetcdfMaker&) {}, "SCAN");
    EXPECT_EQ(reasonOf(path("none")), "was read");
    EXPECT_THAT(reasonOf(path("missing")), HasSubstr("No such file"));
    EXPECT_THAT(reasonOf(path(".")), HasSubstr("not a regular file"));
    EXPECT_EQ(reasonOf(write({})), "empty");
    EXPECT_THAT(reasonOf(write("a text")), HasSubstr("none of ODIM_H5"));
    EXPECT_THAT(reasonOf(write("\x1f\x8b\x08 packed")), HasSubstr("unpack it first"));
}

TEST_F(QUORRadarReaderTest, RefusesFilesThatAreCutOffAnywhere) {
    const QByteArray level2 = RadarFiles::makeLevel2().toBytes();
    RadarFiles::writeOdim(path("whole"));
    const QByteArray odim = readFile(path("whole"));
    RadarFiles::writeClassicCfRadial1(path("classic"));
    EXPECT_EQ(reasonOf(path("classic")), "was read");
    const QByteArray classic = readFile(path("classic"));
    for (int part = 0; part < 24; ++part) {
        EXPECT_NE(reasonOf(write(level2.left(level2.size() * part / 24))), "was read") << part;
        EXPECT_NE(reasonOf(write(odim.left(odim.size() * part / 24))), "was read") << part;
        EXPECT_NE(reasonOf(write(classic.left(classic.size() * part / 24))), "was read") << part;
    }
    EXPECT_NE(reasonOf(write(level2.chopped(1))), "was read");
    EXPECT_NE(reasonOf(write(odim.chopped(1))), "was read");
}

TEST_F(QUORRadarReaderTest, LivesThroughDamagedBytes) {
    const QByteArray whole = RadarFiles::makeLevel2().toBytes(false);
    quint32 random = 12345;
    for (int i = 0; i < 300; ++i) {
        QByteArray damaged = whole.left(200000);
        for (int j = 0; j < 4; ++j) {
            random = random * 1664525U + 1013904223U;
            // Half of the damage in the first messages, where the structure is.
            const auto place = qsizetype(random >> 8) % (j % 2 == 0 ? 6000 : damaged.size());
            damaged[place] = char(random >> 24);
        }
        try {
            QUORRadarReader::read(damaged);
        } catch (const QUORImportError&) {
            continue; // the usual end
        }
    }
}

TEST_F(QUORRadarReaderTest, EndsABombOrACrashWithItsFile) {
    const QByteArray zeros(qsizetype(200) << 20, '\0');
    QByteArray packed(1 << 20, '\0');
    auto size = unsigned(packed.size());
    ASSERT_EQ(BZ2_bzBuffToBuffCompress(packed.data(), &size, const_cast<char*>(zeros.data()),
                                       unsigned(zeros.size()), 9, 0, 0),
              BZ_OK);
    QByteArray bomb = RadarFiles::makeLevel2().toBytes().left(24);
    const quint32 length = qToBigEndian(size);
    bomb.append(reinterpret_cast<const char*>(&length), 4).append(packed.left(qsizetype(size)));
    EXPECT_THAT(reasonOf(write(bomb)), HasSubstr("holds more than 32 MiB"));

    const QString good = write(RadarFiles::makeLevel2().toBytes());
    EXPECT_EQ(reasonOf(good), "was read");
    QUORReaderProcess::Limits hasty;
    hasty.wall = std::chrono::milliseconds(0);
    EXPECT_THAT(reasonOf(good, hasty), HasSubstr("took longer than"));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    QUORReaderProcess::Limits poor;
    poor.memory = 0;
    EXPECT_THAT(reasonOf(good, poor),
                testing::AnyOf(HasSubstr("memory"), HasSubstr("crashed"), HasSubstr("failed")));
    // What the program itself has taken is no matter of the file.
    const std::size_t taken = QUORReaderProcess::Limits().memory;
    void* const space = ::mmap(nullptr, taken, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(space, MAP_FAILED);
    EXPECT_EQ(reasonOf(good), "was read");
    ::munmap(space, taken);
#endif
}

TEST_F(QUORRadarReaderTest, ReadsFilesOfRealRadars) {
    const struct {
        const char* name;
        std::size_t sweeps;
        double highest; ///< dBZ, as other programs read them
    } rows[] = {{"open/KLBB20160601_150025_V06", 11, 71.5},
                {"open/T_PAGZ35_C_ENMI_20170421090837.hdf", 6, 51.0},
                {"open/example_plot_ppi_single_sweep.nc", 4, 51.492},
                {"open/cpol_200601200050_grid.nc", 0, 55.337}};
    for (const auto& row : rows) {
        const QString file = sampleDataPath(QLatin1String(row.name));
        if (file.isEmpty()) {
            GTEST_SKIP() << "no sample data";
        }
        const QUORRadarData data = read(file);
        EXPECT_EQ(data.sweeps.size(), row.sweeps) << row.name;
        float highest = -100.0F;
        for (const QUORRadarSweep& sweep : data.sweeps) {
            const QUORRadarMoment& moment = *sweep.find(Quantity::Reflectivity);
            for (const quint16 code : moment.codes) {
                highest = std::fmax(highest, moment.value(code));
            }
        }
        if (data.grid) {
            for (const float value : data.grid->fields.front().values) {
                highest = std::fmax(highest, value);
            }
        }
        EXPECT_NEAR(highest, row.highest, 0.002) << row.name;
    }
}
