// SPDX-License-Identifier: MIT
// The colours file: every look-up and every map that it can give, in both units.
#include "FuzzScratch.h"
#include "QUORColormap.h"
#include "QUORDataType.h"

namespace {

constexpr int STEPS = 16;

void check(QUORColormap& map, const QUORDataType& type) {
    FUZZ_REQUIRE(map.construct());
    const double lowest = type.getMinDisplayValue();
    const double highest = type.getMaxDisplayValue();
    for (int step = -1; step <= STEPS + 1; ++step) {
        for (const int component : map.getColor(lowest + (highest - lowest) * step / STEPS)) {
            FUZZ_REQUIRE(component >= 0 && component <= 255);
        }
    }
    map.setPiecewiseConstant();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    FuzzScratch::instance().useSettings(QStringLiteral("QUOR3DColors"), fuzzBytes(data, size));
    // One data type a run, or half of the time goes into reading the file again.
    const auto rows = QUORDataType::getRows();
    const QUORDataType type(rows[size % rows.size()].code);
    QUORColormap::getDataTypeLegendInfo(type.getRawType());
    auto scales = QUORColormap::getScalesForDataType(type.getRawType());
    scales.resize(std::min<qsizetype>(scales.size(), 2));
    scales.append({1, QStringLiteral("Default")});
    for (const QUORColormap::ColorScaleListItem& scale : scales) {
        QUORColormap byName(scale.name, type, QUORColormap::Absolute);
        check(byName, type);
        QUORColormap byNumber(scale.id, type, QUORColormap::Display);
        check(byNumber, type);
    }
    return 0;
}
