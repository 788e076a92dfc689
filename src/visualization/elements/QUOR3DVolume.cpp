// SPDX-License-Identifier: MIT
#include "QUOR3DVolume.h"

#include "QUORColormap.h"
#include "QUORDataType.h"
#include "QUORLog.h"
#include "QUORVolumeMapper.h"

#include <vtkActor.h>
#include <vtkAlgorithm.h>
#include <vtkAssembly.h>
#include <vtkColorTransferFunction.h>
#include <vtkGPUVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPiecewiseFunction.h>
#include <vtkPointSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int RAMP_POINTS = 15;
constexpr int RAMP_EXPONENT = 5;

/// Twice in each voxel of reduced data; what lies wider apart shows as bands. Automatic distances would
/// also take the scale of the volume in the scene for that of its voxels, and show nothing.
template <class Mapper>
vtkSmartPointer<vtkVolumeMapper> makeMapper(vtkImageData* image) {
    auto mapper = vtkSmartPointer<Mapper>::New();
    mapper->AutoAdjustSampleDistancesOff();
    mapper->SetSampleDistance(std::max(1.0F, float(0.5 * image->GetSpacing()[0])));
    mapper->SetInputData(image);
    return mapper;
}

vtkSmartPointer<vtkVolumeMapper> makeMapper(vtkAlgorithm* data, bool hardware) {
    auto* image = vtkImageData::SafeDownCast(data->GetOutputDataObject(0));
    return hardware ? makeMapper<vtkGPUVolumeRayCastMapper>(image) : makeMapper<QUORVolumeMapper>(image);
}

/// Never seen; as an invisible part it costs nothing.
vtkSmartPointer<vtkActor> makePointActor() {
    vtkNew<vtkPointSource> source;
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(source->GetOutputPort());
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    actor->GetProperty()->SetOpacity(0.0);
    actor->VisibilityOff();
    return actor;
}

/// One end of the ramp.
struct End {
    double value = 0.0;
    double opacity = 0.0;
};

End makeEnd(double display, double percent, const QUORDataType& dataType) {
    const double within = std::clamp(display, dataType.getMinDisplayValue(), dataType.getMaxDisplayValue());
    return {double(std::max(dataType.displayToAbsoluteValue(within), dataType.getMinAbsValue())),
            std::clamp(percent, 0.0, 100.0) * 0.01};
}

void addRampPoint(vtkPiecewiseFunction& ramp, int number, double x, double opacity) {
    ramp.AddPoint(x, opacity);
    logDebug(QStringLiteral("Point #%1 = %2, %3").arg(number).arg(x).arg(opacity));
}

} // namespace

QUOR3DVolume::QUOR3DVolume(vtkAlgorithm* data, bool hardware)
    : _mapper(makeMapper(data, hardware)),
      _volume(vtkSmartPointer<vtkVolume>::New()),
      _assembly(vtkSmartPointer<vtkAssembly>::New()) {
    _volume->SetMapper(_mapper);
    _assembly->AddPart(_volume);
    _assembly->AddPart(makePointActor());
}

QUOR3DVolume::~QUOR3DVolume() = default;

void QUOR3DVolume::update(const QUORLayerParameters3d& params, const QUORDataType& dataType,
                          const QUORColormap& colormap) {
    vtkNew<vtkVolumeProperty> property;
    property->SetColor(colormap.getMap());
    property->SetScalarOpacity(makeRamp(params, dataType));
    property->SetScalarOpacityUnitDistance(1.0);
    property->SetInterpolationTypeToLinear();
    property->ShadeOff();
    _volume->SetProperty(property);
    if (auto* mapper = QUORVolumeMapper::SafeDownCast(_mapper)) {
        const double lowest = std::min(params.getVolumeValueLow(), params.getVolumeValueHigh());
        mapper->SetLowestSeen(makeEnd(lowest, 0.0, dataType).value);
    }
}

void QUOR3DVolume::run() {
    _mapper->Update();
}

vtkSmartPointer<vtkProp> QUOR3DVolume::getProp() const {
    return _assembly;
}

vtkSmartPointer<vtkPiecewiseFunction> QUOR3DVolume::makeRamp(const QUORLayerParameters3d& params,
                                                             const QUORDataType& dataType) {
    End low = makeEnd(params.getVolumeValueLow(), params.getVolumeOpacityLow(), dataType);
    End high = makeEnd(params.getVolumeValueHigh(), params.getVolumeOpacityHigh(), dataType);
    logDebug(QStringLiteral("Volume opacity: %1, %2").arg(low.opacity).arg(high.opacity));
    if (high.value < low.value) {
        std::swap(low, high);
    }
    logDebug(QStringLiteral("Value range: %1 .. %2").arg(low.value).arg(high.value));
    logDebug(QStringLiteral("Opacity range: %1 .. %2").arg(low.opacity).arg(high.opacity));
    logDebug(QStringLiteral("Exponent: %1").arg(RAMP_EXPONENT));
    auto ramp = vtkSmartPointer<vtkPiecewiseFunction>::New();
    const double width = high.value - low.value;
    if (width <= 0.0) {
        ramp->AddPoint(low.value - 1.0, 0.0);
        addRampPoint(*ramp, 1, high.value, high.opacity);
        return ramp;
    }
    ramp->AddPoint(low.value, 0.0);
    for (int i = 1; i <= RAMP_POINTS; ++i) {
        const double part = double(i) / RAMP_POINTS;
        const double opacity = std::pow(part, RAMP_EXPONENT) * (high.opacity - low.opacity) + low.opacity;
        addRampPoint(*ramp, i, low.value + part * width, opacity);
    }
    return ramp;
}
