// SPDX-License-Identifier: MIT
#include "QUOR3DDataChain.h"

#include "QUORGridReader.h"
#include "QUORLog.h"
#include "QUORStopwatch.h"

#include <QCoreApplication>

#include <vtkImageData.h>
#include <vtkImageGaussianSmooth.h>
#include <vtkImageShrink3D.h>
#include <vtkImageThreshold.h>
#include <vtkNew.h>
#include <vtkTrivialProducer.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double LEVEL_SPACING = 5.0;
constexpr int MAXIMUM_SHRINK = 1000;
/// In voxels: a wider Gaussian leaves nothing of any product.
constexpr double MAXIMUM_DEVIATION = 50.0;
constexpr double RADIUS_FACTOR = 3.0;

/// One per axis of the image.
using Factors = std::array<int, 3>;

void reportFailure(const QUORFile& file, const QString& reason) {
    QUORLog& log = QUORLog::Instance();
    log.logError(QStringLiteral("Tried to load invalid 3D data file: ") + file.getName());
    log.logError(QStringLiteral("Aborting 3D visualization."));
    log.logError(QStringLiteral("..reason: ") + reason);
    log.logHistory({QCoreApplication::translate("App", "Visualizing 3D data failed:"),
                    QStringLiteral(" -") + file.getName()});
}

vtkSmartPointer<vtkImageData> readGrid(const QUORFile& file) {
    QUORGridReader reader(file);
    vtkSmartPointer<vtkImageData> image =
        file.isValid() ? reader.read(file.getZPoints(), LEVEL_SPACING) : nullptr;
    if (!image) {
        reportFailure(file, file.isValid() ? reader.getError() : QStringLiteral("not a valid product"));
    }
    return image;
}

vtkSmartPointer<vtkImageData> removeNoData(vtkImageData* image, const QUORDataType& dataType,
                                           unsigned int noData) {
    logDebug(QStringLiteral("Data type no data threshold: ") + QString::number(noData));
    vtkNew<vtkImageThreshold> threshold;
    threshold->SetInputData(image);
    threshold->ThresholdBetween(dataType.getMinAbsValue(), dataType.getMaxAbsValue());
    threshold->ReplaceInOff();
    threshold->ReplaceOutOn();
    threshold->SetOutValue(noData);
    threshold->SetOutputScalarType(image->GetScalarType());
    threshold->Update();
    return threshold->GetOutput();
}

/// The distance between a reduced sample and the middle of the samples it stands for.
int shiftOf(int factor) {
    return -(factor / 2);
}

/// An axis that does not hold two whole blocks stays as it is: there is no surface in a single sample, and
/// the filter would read outside an axis without any whole block.
int usableFactor(int factor, int points) {
    const int first = (-shiftOf(factor) + factor - 1) / factor;
    const int endOfSecond = (first + 2) * factor + shiftOf(factor);
    return endOfSecond <= points ? factor : 1;
}

vtkSmartPointer<vtkImageData> shrink(vtkImageData* image, const Factors& factors) {
    vtkNew<vtkImageShrink3D> filter;
    filter->SetInputData(image);
    filter->SetShrinkFactors(factors[0], factors[1], factors[2]);
    filter->SetShift(shiftOf(factors[0]), shiftOf(factors[1]), shiftOf(factors[2]));
    filter->Update();
    return filter->GetOutput();
}

vtkSmartPointer<vtkImageData> smoothen(vtkImageData* image, double amount, const Factors& factors) {
    const auto deviation = [amount](int factor) { return std::min(amount / factor, MAXIMUM_DEVIATION); };
    vtkNew<vtkImageGaussianSmooth> filter;
    filter->SetInputData(image);
    filter->SetDimensionality(3);
    filter->SetRadiusFactors(RADIUS_FACTOR, RADIUS_FACTOR, RADIUS_FACTOR);
    filter->SetStandardDeviations(deviation(factors[0]), deviation(factors[1]), deviation(factors[2]));
    filter->Update();
    return filter->GetOutput();
}

} // namespace

vtkSmartPointer<vtkAlgorithm> vtk_3D_data_create(const QUORFile::CPtr& file, int horizontalShrink,
                                                 int verticalShrink, double smooth,
                                                 std::optional<unsigned int> noData) {
    logDebug(QStringLiteral("vtk_3D_data_create() called."));
    const QUORStopwatch watch;
    vtkSmartPointer<vtkImageData> image = readGrid(*file);
    if (!image) {
        return {};
    }
    logDebug(QStringLiteral("..data cached in ") + watch.seconds() + QStringLiteral(" seconds."));
    logDebug(file->getItemSize() == 1 ? QStringLiteral("..one byte 3D data")
                                      : QStringLiteral("..two byte 3D data"));
    image = removeNoData(image, file->getDataType(), noData.value_or(file->getDataType().getNoDataValue()));

    const int h = std::clamp(horizontalShrink, 1, MAXIMUM_SHRINK);
    const int v = std::clamp(verticalShrink, 1, MAXIMUM_SHRINK);
    const Factors factors{usableFactor(h, file->getXPoints()), usableFactor(h, file->getYPoints()),
                          usableFactor(v, file->getZPoints())};
    logDebug(QStringLiteral("Shrink filter: factor=(1/%1, 1/%2)").arg(h).arg(v));
    if (h > 1 || v > 1) {
        logDebug(QStringLiteral("Applying shrink filter.."));
        image = shrink(image, factors);
    }
    logDebug(QStringLiteral("Smooth filter: amount=") + QString::number(smooth));
    if (smooth > 0.0) {
        logDebug(QStringLiteral("Applying smooth filter.."));
        image = smoothen(image, smooth, factors);
    }
    vtkSmartPointer<vtkTrivialProducer> data = vtkSmartPointer<vtkTrivialProducer>::New();
    data->SetOutput(image);
    logDebug(QStringLiteral("..3d data read in ") + watch.seconds() + QStringLiteral(" seconds."));
    logDebug(QStringLiteral("vtk_3D_data_create() finished."));
    return data;
}
