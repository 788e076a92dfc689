// SPDX-License-Identifier: MIT
#include "QUOR2DVisualElement.h"

#include "QUOR2DLayerActor.h"
#include "QUORAssert.h"
#include "QUORColormap.h"
#include "QUORFile.h"
#include "QUORGridReader.h"
#include "QUORStopwatch.h"

#include <QCoreApplication>

#include <vtkActor.h>
#include <vtkCellArray.h>
#include <vtkColorTransferFunction.h>
#include <vtkDataSetMapper.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkProperty.h>
#include <vtkThreshold.h>
#include <vtkUnstructuredGrid.h>

namespace {

constexpr QUORElementTexts TEXTS{"QUOR2DVisualElement", "Creating new visualization.", false, false};

void reportFailure(const QUORFile& file, const QString& reason) {
    QUORLog& log = QUORLog::Instance();
    log.logError(QStringLiteral("Tried to load invalid 2D data file: ") + file.getName());
    log.logError(QStringLiteral("Aborting 2D visualization."));
    log.logError(QStringLiteral("..reason: ") + reason);
    log.logHistory(QStringList{QCoreApplication::translate("App", "Visualizing 2D data failed:"),
                               QStringLiteral(" -") + file.getName()});
}

/// The cells whose values the data type allows; null when the file cannot be read.
vtkSmartPointer<vtkAlgorithm> vtk_2D_data_create(const QUORFile& file) {
    const QUORLogScope scope("vtk_2D_data_create");
    const QUORStopwatch watch;
    QUORLog& log = QUORLog::Instance();
    QUORGridReader reader(file);
    const vtkSmartPointer<vtkImageData> grid = reader.read(1, 1.0);
    if (!grid) {
        reportFailure(file, reader.getError());
        return nullptr;
    }
    log.logDebug(QStringLiteral("..data cached in ") + watch.seconds() + QStringLiteral(" seconds."));
    log.logDebug(QLatin1String(file.getItemSize() == 1 ? "..one byte 2D data" : "..two byte 2D data"));
    const QUORDataType type = file.getDataType();
    auto threshold = vtkSmartPointer<vtkThreshold>::New();
    threshold->SetInputData(grid);
    threshold->SetLowerThreshold(type.getMinAbsValue());
    threshold->SetUpperThreshold(type.getMaxAbsValue());
    threshold->SetThresholdFunction(vtkThreshold::THRESHOLD_BETWEEN);
    threshold->Update();
    log.logDebug(QStringLiteral("..2d data read in ") + watch.seconds() + QStringLiteral(" seconds."));
    return threshold;
}

/// The pixel cells as polygons, which the mapper draws as they are: what it would extract from a grid by
/// itself leaks with each image.
vtkSmartPointer<vtkPolyData> makeSurface(vtkUnstructuredGrid* pixels) {
    vtkNew<vtkCellArray> quads;
    quads->AllocateExact(pixels->GetNumberOfCells(), 4 * pixels->GetNumberOfCells());
    vtkIdType count = 0;
    const vtkIdType* ids = nullptr;
    for (vtkIdType i = 0; i < pixels->GetNumberOfCells(); ++i) {
        pixels->GetCellPoints(i, count, ids);
        quads->InsertNextCell({ids[0], ids[1], ids[3], ids[2]});
    }
    auto surface = vtkSmartPointer<vtkPolyData>::New();
    surface->SetPoints(pixels->GetPoints());
    surface->SetPolys(quads);
    surface->GetPointData()->ShallowCopy(pixels->GetPointData());
    return surface;
}

} // namespace

QUOR2DVisualElement::QUOR2DVisualElement(QUORVisualGroup* group, int key)
    : QUORTypedVisualElement(group, key, TEXTS) {
    const QUORLogScope scope("QUOR2DVisualElement::QUOR2DVisualElement");
}

QUOR2DVisualElement::~QUOR2DVisualElement() {
    const QUORLogScope scope("QUOR2DVisualElement::~QUOR2DVisualElement");
}

void QUOR2DVisualElement::invalidate() {
    const QUORLogScope scope("QUOR2DVisualElement::invalidate");
    QUORLog::Instance().logDebug(QStringLiteral("Removing old 2D layer objects.."));
    _params.reset();
    _data = nullptr;
    dropDisplay();
}

void QUOR2DVisualElement::rebuild(const QUORAbortFlag& /*abort*/) {
    createVTKData();
}

void QUOR2DVisualElement::show(bool visible) {
    if (visible && !_prop && _data) {
        createVTK();
    }
}

void QUOR2DVisualElement::createVTKData() {
    const QUORLogScope scope("QUOR2DVisualElement::createVTKData");
    dropDisplay();
    _data = nullptr;
    const QUORFile::CPtr file = _params->getDataFile();
    if (file) {
        _data = vtk_2D_data_create(*file);
    }
}

void QUOR2DVisualElement::createVTK() {
    const QUORLogScope scope("QUOR2DVisualElement::createVTK");
    QUOR_ASSERT(_params);
    QUOR_ASSERT(_params->getDataFile());
    _colormap = std::make_shared<QUORColormap>(QStringLiteral("Default"),
                                               _params->getDataFile()->getDataType(), QUORColormap::Absolute);
    _mapper = vtkSmartPointer<vtkDataSetMapper>::New();
    _mapper->SetInputData(makeSurface(vtkUnstructuredGrid::SafeDownCast(_data->GetOutputDataObject(0))));
    _mapper->SetLookupTable(_colormap->getMap());
    _mapper->SetUseLookupTableScalarRange(true);
    // Bytes would otherwise be taken as colours themselves.
    _mapper->SetColorModeToMapScalars();
    _actor = vtkSmartPointer<vtkActor>::New();
    _actor->SetMapper(_mapper);
    vtkProperty* property = _actor->GetProperty();
    property->SetInterpolationToGouraud();
    property->SetAmbient(1.0);
    property->SetDiffuse(0.0);
    property->SetSpecular(0.0);
    property->SetSpecularPower(4.0);
    property->SetColor(1.0, 1.0, 1.0);
    auto layer = vtkSmartPointer<QUOR2DLayerActor>::New();
    layer->AddPart(_actor);
    _prop = layer;
}

void QUOR2DVisualElement::dropDisplay() {
    _prop = nullptr;
    _actor = nullptr;
    _mapper = nullptr;
    _colormap.reset();
}
