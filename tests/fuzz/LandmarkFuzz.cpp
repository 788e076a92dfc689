// SPDX-License-Identifier: MIT
// The landmarks file, and the sets taken from it.
#include "FuzzScratch.h"
#include "QUORLandmarkList.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    FuzzScratch::instance().useSettings(QStringLiteral("QUOR3DLandmarks"), fuzzBytes(data, size));
    const QUORLandmarkList list;
    for (const QUORLandmark::Ptr& landmark : list.getLandmarks()) {
        const QUORCoordinate location = landmark->getLocation();
        FUZZ_REQUIRE(std::abs(location.getLat()) <= 90.0 && std::abs(location.getLon()) <= 360.0);
        FUZZ_REQUIRE(std::isfinite(landmark->getAlt()));
        FUZZ_REQUIRE(landmark->getPriority() <= QUORLandmark::MAX_PRIORITY);
        FUZZ_REQUIRE(std::isfinite(landmark->getR() + landmark->getG() + landmark->getB()));
    }
    for (const double east : {20.0, -170.0}) { // within a day, and over the date line
        const auto set = list.getLandmarkSet(QUORCoordinate(50.0, 10.0), QUORCoordinate(-80.0, 0.0),
                                             QUORCoordinate(80.0, east));
        FUZZ_REQUIRE(set && set->getLandmarks().size() <= list.getLandmarks().size());
    }
    return 0;
}
