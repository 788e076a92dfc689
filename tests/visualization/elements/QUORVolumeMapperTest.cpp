// SPDX-License-Identifier: MIT
#include "QUORVolumeMapper.h"

#include "OffscreenScene.h"

#include <vtkColorTransferFunction.h>
#include <vtkFixedPointVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkPiecewiseFunction.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace {

constexpr int POINTS = 24;
constexpr double LOWEST = 50.0;

/// Volumes drawn by every ray and by the rays that are needed.
class QUORVolumeMapperTest : public OffscreenScene {
protected:
    using Fill = std::function<int(int, int, int)>;

    static vtkSmartPointer<vtkImageData> makeImage(int type, const Fill& fill) {
        auto image = vtkSmartPointer<vtkImageData>::New();
        image->SetDimensions(POINTS, POINTS, POINTS);
        image->SetSpacing(1.0, 1.0, 2.0);
        image->AllocateScalars(type, 1);
        for (int z = 0; z < POINTS; ++z) {
            for (int y = 0; y < POINTS; ++y) {
                for (int x = 0; x < POINTS; ++x) {
                    image->SetScalarComponentFromDouble(x, y, z, 0, fill(x, y, z));
                }
            }
        }
        return image;
    }

    std::vector<unsigned char> draw(vtkFixedPointVolumeRayCastMapper* mapper, vtkImageData* image) {
        mapper->AutoAdjustSampleDistancesOff();
        mapper->SetSampleDistance(1.0F);
        mapper->SetInputData(image);
        if (auto* own = QUORVolumeMapper::SafeDownCast(mapper)) {
            own->SetLowestSeen(LOWEST);
        }
        vtkNew<vtkVolumeProperty> property;
        vtkNew<vtkPiecewiseFunction> opacity;
        opacity->AddPoint(LOWEST, 0.0);
        opacity->AddPoint(200.0, 0.6);
        vtkNew<vtkColorTransferFunction> color;
        color->AddRGBPoint(LOWEST, 0.0, 1.0, 0.0);
        color->AddRGBPoint(200.0, 1.0, 0.0, 1.0);
        property->SetScalarOpacity(opacity);
        property->SetColor(color);
        property->SetInterpolationTypeToLinear();
        vtkNew<vtkVolume> volume;
        volume->SetMapper(mapper);
        volume->SetProperty(property);
        renderer->AddViewProp(volume);
        vtkCamera* camera = renderer->GetActiveCamera();
        camera->SetPosition(70.0, -45.0, 80.0);
        camera->SetFocalPoint(12.0, 12.0, 24.0);
        camera->SetViewUp(0.0, 0.0, 1.0);
        camera->SetClippingRange(1.0, 400.0);
        window->Render();
        vtkNew<vtkUnsignedCharArray> pixels;
        const int* size = window->GetSize();
        window->GetPixelData(0, 0, size[0] - 1, size[1] - 1, 0, pixels.Get(), 0);
        renderer->RemoveAllViewProps();
        return {pixels->GetPointer(0), pixels->GetPointer(0) + pixels->GetNumberOfValues()};
    }

    struct Difference {
        double mean = 0.0;  ///< of all pixels, of 255
        double place = 0.0; ///< of the means of ten by ten pixels, the largest
        int pixel = 0;      ///< the largest
        bool isSeen = false;
    };

    /// From every ray.
    Difference differenceOf(vtkImageData* image) {
        vtkNew<vtkFixedPointVolumeRayCastMapper> every;
        every->SetImageSampleDistance(1.0F);
        vtkNew<QUORVolumeMapper> needed;
        const auto expected = draw(every, image);
        const auto actual = draw(needed, image);
        const int width = window->GetSize()[0];
        std::map<std::pair<int, int>, double> places;
        Difference result;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const int difference = int(expected[i]) - int(actual[i]);
            const int at = int(i / 3);
            places[{at % width / 10, at / width / 10}] += difference / 300.0;
            result.mean += std::abs(difference) / double(expected.size());
            result.pixel = std::max(result.pixel, std::abs(difference));
            result.isSeen = result.isSeen || expected[i] > 100;
        }
        for (const auto& [where, sum] : places) {
            result.place = std::max(result.place, std::abs(sum));
        }
        return result;
    }
};

// Rays that begin elsewhere meet thin echo at other places; what they show of it is the same.
TEST_F(QUORVolumeMapperTest, LosesNothingWhereverTheEchoIs) {
    const struct {
        const char* name;
        Fill fill;
        bool isSeen;
    } rows[] = {
        {"in the middle",
         [](int x, int y, int z) { return 8 < x && x < 14 && 5 < y && y < 9 && 10 < z && z < 20 ? 180 : 3; },
         true},
        {"one point", [](int x, int y, int z) { return x == 12 && y == 7 && z == 11 ? 255 : 0; }, true},
        {"two corners",
         [](int x, int y, int z) { return x + y + z < 6 || x + y + z > 3 * POINTS - 9 ? 200 : 20; }, true},
        {"at one face", [](int x, int /*y*/, int z) { return x > POINTS - 4 && z > 3 ? 220 : 0; }, true},
        {"everywhere", [](int x, int y, int z) { return 40 + (x * 7 + y * 5 + z * 3) % 160; }, true},
        {"hardly", [](int /*x*/, int /*y*/, int z) { return z == 5 ? 60 : 49; }, false},
        {"nowhere", [](int /*x*/, int /*y*/, int /*z*/) { return 49; }, false},
    };
    for (const auto& row : rows) {
        for (const int type : {VTK_UNSIGNED_CHAR, VTK_UNSIGNED_SHORT}) {
            SCOPED_TRACE(testing::Message() << row.name << ' ' << type);
            const Difference difference = differenceOf(makeImage(type, row.fill));
            EXPECT_EQ(difference.isSeen, row.isSeen);
            EXPECT_LE(difference.mean, 0.4);
            EXPECT_LE(difference.place, 9.0);
        }
    }
}

TEST_F(QUORVolumeMapperTest, CastsFewerRaysInLargePicturesAndShowsTheSame) {
    const auto image = makeImage(VTK_UNSIGNED_CHAR, [](int x, int y, int z) {
        const double distance = std::hypot(x - 11.0, y - 12.0, z - 10.0);
        return int(std::max(0.0, 220.0 - 16.0 * distance + 12.0 * std::sin(x * 1.3) * std::cos(y * 0.9)));
    });
    const struct {
        int width;
        int height;
        double distance;
    } rows[] = {{400, 300, 1.0}, {1000, 900, 1.5}, {1600, 1200, 2.0}, {2400, 1800, 2.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.height);
        window->SetSize(row.width, row.height);
        vtkNew<QUORVolumeMapper> mapper;
        draw(mapper, image);
        EXPECT_NEAR(mapper->GetImageSampleDistance(), row.distance, 0.01);
        const Difference difference = differenceOf(image);
        EXPECT_TRUE(difference.isSeen);
        EXPECT_LE(difference.mean, 0.5);
        EXPECT_LE(difference.pixel, 37);
    }
}

} // namespace
