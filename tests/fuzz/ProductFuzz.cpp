// SPDX-License-Identifier: MIT
// A product file: its header, and where a grid can be built of it, its way up to the filtered image.
#include "FuzzScratch.h"
#include "QUOR3DDataChain.h"
#include "QUORFile.h"
#include "QUORGridReader.h"

#include <vtkAlgorithm.h>
#include <vtkImageData.h>

#include <cmath>

namespace {

constexpr qint64 MOST_POINTS = 1 << 16;

void describe(const QUORFile& file) {
    FUZZ_REQUIRE(!file.getSite().contains(QLatin1Char('/')));
    FUZZ_REQUIRE(file.getTotalFileSize() - file.getHeaderSize() == file.getDataSize());
    FUZZ_REQUIRE(file.getItemSize() == 1 || file.getItemSize() == 2);
    FUZZ_REQUIRE(std::isfinite(file.getSiteCoordinates().getLat()));
    FUZZ_REQUIRE(file.isUnchanged());
    const QUORDataType type = file.getDataType();
    for (const unsigned value : {type.getMinAbsValue(), type.getMaxAbsValue(), 0U, 255U}) {
        type.displayToAbsoluteValue(type.absoluteToDisplayValue(value));
    }
    file.getPointM(1, 1, 1);
    file.getProduct();
    file.getDataTime();
    file.getRadarElevation();
}

void read(const QUORFile::CPtr& file) {
    QUORGridReader reader(*file);
    const vtkSmartPointer<vtkImageData> grid = reader.read(file->getZPoints(), 1.0);
    FUZZ_REQUIRE(grid ? grid->GetNumberOfPoints() == file->getItemCount() : !reader.getError().isEmpty());
    const int shrink = 1 + file->getXScale() % 4;
    FUZZ_REQUIRE(!grid || vtk_3D_data_create(file, shrink, shrink, shrink == 1 ? 0.0 : 1.0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const QString path =
        FuzzScratch::instance().write(QStringLiteral("CAZ240601120000.cap"), fuzzBytes(data, size));
    const auto file = std::make_shared<const QUORFile>(path);
    if (file->isValid()) {
        describe(*file);
        if (file->getGridError().isEmpty() && file->getItemCount() <= MOST_POINTS) {
            read(file);
        }
    }
    return 0;
}
