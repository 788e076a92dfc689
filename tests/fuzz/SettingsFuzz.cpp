// SPDX-License-Identifier: MIT
// A settings file, as main and as background settings: the checks of the file, then every record of it.
#include "FuzzScratch.h"
#include "QUORBackgroundSettings.h"
#include "QUORDataType.h"
#include "QUORDisplayState.h"
#include "QUORExportSettings.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsText.h"
#include "QUORViewAngle.h"

#include <cmath>

namespace {

constexpr int CODE_OF_REFLECTIVITY = 1;

void checkFile(const QByteArray& content, const QString& path) {
    const int lines = int(content.count('\n') + content.count('\r')) + 1;
    const int bad = QUORSettingsFile::findBadLine(content);
    FUZZ_REQUIRE(bad >= 0 && bad <= lines);
    QUORSettingsText text(content);
    FUZZ_REQUIRE(text.toBytes() == content);
    text.set(QStringLiteral("Background"), QStringLiteral("width"), QStringLiteral("640"));
    const QByteArray once = text.toBytes();
    text.set(QStringLiteral("Background"), QStringLiteral("width"), QStringLiteral("640"));
    FUZZ_REQUIRE(bad > 0 || text.toBytes() == once);
    QString error;
    const auto read = QUORSettingsFile::read(path, error);
    FUZZ_REQUIRE(read ? *read == content : !error.isEmpty());
}

void loadMain() {
    QUORGeneralSettings general;
    general.load();
    FUZZ_REQUIRE(general.getVerticalScale() > 0.0 && std::isfinite(general.getVerticalScale()));
    FUZZ_REQUIRE(general.getHorizontalDataShrink() >= 1 && general.getVerticalDataShrink() >= 1);
    FUZZ_REQUIRE(std::isfinite(general.getDataSmoothing()));
    general.loadDisplayStates(std::make_shared<QUORDisplayState>());
    general.loadViewAngles(std::make_shared<QUORViewAngle>());
    FUZZ_REQUIRE(general.getDisplayStateNames().size() <= 1001);
    const QUORProductSettings product(QStringLiteral("CAPPI"), QStringLiteral("Z"),
                                      QUORDataType(CODE_OF_REFLECTIVITY), QUORProductSettings::NotSaved);
    for (auto surface = product.getSurfaces().begin(); surface != product.getSurfaces().end(); ++surface) {
        FUZZ_REQUIRE(std::isfinite(surface.key()) && surface.value() >= 0 && surface.value() <= 100);
    }
    QUORExportSettings().load();
}

void loadBackground() {
    const QUORBackgroundSettings background;
    for (const int side : {background.getWidth(), background.getHeight()}) {
        FUZZ_REQUIRE(side >= QUORExportSettings::MINIMUM_IMAGE_SIDE &&
                     side <= QUORExportSettings::MAXIMUM_IMAGE_SIDE);
    }
    FUZZ_REQUIRE(background.getOutputFileExtension().startsWith(QLatin1Char('.')) ||
                 background.getOutputFormat() == QUORExportSettings::UnknownFormat);
    background.getDisplayStateName();
    background.get2DProduct(QStringLiteral("Z"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const QByteArray content = fuzzBytes(data, size);
    FuzzScratch& scratch = FuzzScratch::instance();
    scratch.useSettings(QStringLiteral("QUOR3D"), content);
    const QString background = scratch.write(QStringLiteral("quor3dd%1.conf").arg(qHash(content)), content);
    qputenv("QUOR3D_BG_SETTINGS", background.toLocal8Bit());
    checkFile(content, background);
    loadMain();
    loadBackground();
    QFile::remove(background);
    return 0;
}
