// SPDX-License-Identifier: MIT
#include "QUORVolumeMapper.h"

#include <vtkDataArray.h>
#include <vtkImageData.h>
#include <vtkObjectFactory.h>
#include <vtkPointData.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

/// Rows of rays that no eye can tell from more.
constexpr double ENOUGH_ROWS = 600.0;
constexpr double WIDEST = 2.0;

/// First and last index of each axis.
using Box = std::array<int, 6>;

/// Around the values that are not smaller; the first index lies behind the last one when there are none.
template <class Value>
Box findBox(const Value* values, const std::array<int, 3>& points, double lowest) {
    Box box{points[0], -1, points[1], -1, points[2], -1};
    for (int z = 0; z < points[2]; ++z) {
        for (int y = 0; y < points[1]; ++y, values += points[0]) {
            const auto seen = [lowest](Value value) { return value >= lowest; };
            const Value* const end = values + points[0];
            const Value* const first = std::find_if(values, end, seen);
            if (first == end) {
                continue;
            }
            const Value* last = end - 1;
            while (!seen(*last)) {
                --last;
            }
            box = {std::min(box[0], int(first - values)),
                   std::max(box[1], int(last - values)),
                   std::min(box[2], y),
                   std::max(box[3], y),
                   std::min(box[4], z),
                   std::max(box[5], z)};
        }
    }
    return box;
}

Box findBox(vtkImageData* image, const std::array<int, 3>& points, double lowest) {
    const void* const values = image->GetScalarPointer();
    return image->GetScalarType() == VTK_UNSIGNED_CHAR
               ? findBox(static_cast<const std::uint8_t*>(values), points, lowest)
               : findBox(static_cast<const std::uint16_t*>(values), points, lowest);
}

} // namespace

vtkStandardNewMacro(QUORVolumeMapper)

QUORVolumeMapper::QUORVolumeMapper() = default;

QUORVolumeMapper::~QUORVolumeMapper() = default;

void QUORVolumeMapper::SetLowestSeen(double value) {
    this->CroppingOff();
    auto* image = vtkImageData::SafeDownCast(this->GetInput());
    if (image == nullptr || image->GetNumberOfScalarComponents() != 1 ||
        (image->GetScalarType() != VTK_UNSIGNED_CHAR && image->GetScalarType() != VTK_UNSIGNED_SHORT)) {
        return;
    }
    std::array<int, 3> points{};
    image->GetDimensions(points.data());
    const Box box = findBox(image, points, value);
    std::array<double, 6> planes{};
    for (int axis = 0; axis < 3; ++axis) {
        const int most = points[axis] - 1;
        // A neighbour of what is seen takes part in the interpolation. Where nothing is seen, any box will
        // do.
        const int first = std::clamp(box[2 * axis] - 1, 0, std::max(most - 1, 0));
        const int last = std::clamp(box[2 * axis + 1] + 1, std::min(first + 1, most), most);
        const int start = image->GetExtent()[2 * axis];
        planes[2 * axis] = image->GetOrigin()[axis] + (start + first) * image->GetSpacing()[axis];
        planes[2 * axis + 1] = image->GetOrigin()[axis] + (start + last) * image->GetSpacing()[axis];
    }
    this->SetCroppingRegionPlanes(planes.data());
    this->SetCroppingRegionFlagsToSubVolume();
    this->CroppingOn();
}

void QUORVolumeMapper::Render(vtkRenderer* renderer, vtkVolume* volume) {
    const double distance = std::clamp(renderer->GetSize()[1] / ENOUGH_ROWS, 1.0, WIDEST);
    this->SetImageSampleDistance(float(distance));
    this->Superclass::Render(renderer, volume);
}
