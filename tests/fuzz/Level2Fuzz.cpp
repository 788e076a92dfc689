// SPDX-License-Identifier: MIT
// A NEXRAD Level II file, packed or not, up to the gridded volume.
#include "FuzzScratch.h"
#include "QUORImportError.h"
#include "QUORPolarGridder.h"
#include "QUORRadarReader.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    // Few inputs would begin like a volume by themselves.
    const QByteArray content = "AR2V0006.001" + fuzzBytes(data, size);
    try {
        const QUORRadarData volume = QUORRadarReader::read(content);
        QUORGridShape shape;
        shape.points = {6, 5, 4};
        shape.steps = {40000.0, 50000.0, 3000.0};
        shape.centre();
        const QUORPolarGridder gridder(volume, QUORRadarQuantity::Reflectivity);
        FUZZ_REQUIRE(gridder.grid(shape).size() == shape.count());
        FUZZ_REQUIRE(gridder.projectLowest(shape).size() == shape.cells());
    } catch (const QUORImportError& error) {
        FUZZ_REQUIRE(!error.getReason().isEmpty());
    }
    return 0;
}
