// SPDX-License-Identifier: MIT
#include "QUOR3DSurfaces.h"

#include "QUORColormap.h"
#include "QUORDataType.h"
#include "QUORLog.h"
#include "QUORStyleGroup.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkFlyingEdges3D.h>
#include <vtkImageData.h>
#include <vtkLookupTable.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkShaderProperty.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int TABLE_SIZE = 256;
constexpr int OPAQUE = 100;
constexpr double AMBIENT = 0.7;
/// The cosine between the vertical and the renderer's first lamp, which stands at (0, -500, 2000).
constexpr double LEVEL_FACING = 0.970143;
constexpr double EDGE_SHADE = 0.25;
constexpr double DARKEST_SHADE = 0.1;

/// One surface as it is drawn.
struct Surface {
    double isovalue = 0.0;
    unsigned int raw = 0;
    int opacity = OPAQUE;
};

std::vector<Surface> toRaw(const QUOR3DSurfaces::Surfaces& surfaces, const QUORDataType& dataType) {
    std::vector<Surface> result;
    for (auto entry = surfaces.cbegin(); entry != surfaces.cend(); ++entry) {
        // The value below the smallest one means no data and has no surface.
        const unsigned int raw =
            std::max(dataType.displayToAbsoluteValue(entry.key()), dataType.getMinAbsValue());
        result.push_back({entry.key(), raw, std::clamp(entry.value(), 0, OPAQUE)});
    }
    return result;
}

const Surface& nearest(const std::vector<Surface>& surfaces, double value) {
    return *std::min_element(surfaces.begin(), surfaces.end(), [value](const Surface& a, const Surface& b) {
        return std::abs(a.raw - value) < std::abs(b.raw - value);
    });
}

/// A colour of the map is a measurement: light only makes it darker, all three components by one factor, and
/// leaves it alone on faces that are level or look at the lamp. What the lamp reaches follows a half Lambert
/// squared, so that undersides keep their form; edges of the unlit part are darkened to separate lobes.
void shadeByProportion(vtkActor* actor) {
    QUORStyleGroup style("RENDERER");
    style.load(false);
    const QUORStyleGroup::Color& ambient = style.color("ambient/color");
    const double unlit = AMBIENT * (ambient[0] + ambient[1] + ambient[2]) / 3.0;
    const QString code =
        QStringLiteral("//VTK::Light::Impl\n"
                       "  float facing = dot(normalVCVSOutput, -lightDirectionVC0);\n"
                       "  float lit = clamp((1.0 + facing) / %1, 0.0, 1.0);\n"
                       "  lit *= lit;\n"
                       "  float edge = 1.0 - abs(dot(normalVCVSOutput, normalize(vertexVC.xyz)));\n"
                       "  float power = max(lightColor0.r, max(lightColor0.g, lightColor0.b));\n"
                       "  float shade = %2 + (1.0 - %2) * lit * power - %3 * (1.0 - lit) * edge;\n"
                       "  gl_FragData[0] = vec4(diffuseColor * clamp(shade, %4, 1.0), opacity);\n")
            .arg(1.0 + LEVEL_FACING, 0, 'f', 5)
            .arg(unlit, 0, 'f', 4)
            .arg(EDGE_SHADE, 0, 'f', 4)
            .arg(DARKEST_SHADE, 0, 'f', 4);
    actor->GetShaderProperty()->AddFragmentShaderReplacement("//VTK::Light::Impl", false, code.toStdString(),
                                                             false);
}

/// Without it no surface is possible, and the filter fails.
bool hasThickness(vtkFlyingEdges3D* filter) {
    auto* image = vtkImageData::SafeDownCast(filter->GetInputDataObject(0, 0));
    return image != nullptr && image->GetDataDimension() == 3;
}

vtkSmartPointer<vtkActor> makeActor(vtkPolyDataMapper* mapper) {
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    vtkProperty* property = actor->GetProperty();
    property->SetInterpolationToGouraud();
    property->SetAmbient(AMBIENT);
    property->SetDiffuse(1.0);
    property->SetSpecular(0.0);
    property->SetSpecularPower(4.0);
    property->SetColor(1.0, 1.0, 1.0);
    shadeByProportion(actor);
    return actor;
}

} // namespace

QUOR3DSurfaces::Part QUOR3DSurfaces::makePart(vtkAlgorithm* data) {
    Part part;
    part.filter = vtkSmartPointer<vtkFlyingEdges3D>::New();
    part.filter->SetInputConnection(data->GetOutputPort());
    part.filter->SetNumberOfContours(0);
    part.mapper = vtkSmartPointer<vtkPolyDataMapper>::New();
    part.actor = makeActor(part.mapper);
    return part;
}

QUOR3DSurfaces::QUOR3DSurfaces(vtkAlgorithm* data)
    : _opaque(makePart(data)), _translucent(makePart(data)), _assembly(vtkSmartPointer<vtkAssembly>::New()) {
    _opaque.actor->ForceOpaqueOn();
    _translucent.actor->ForceTranslucentOn();
}

QUOR3DSurfaces::~QUOR3DSurfaces() = default;

void QUOR3DSurfaces::update(const Surfaces& surfaces, const QUORDataType& dataType,
                            const QUORColormap& colormap) {
    vtk_3D_surface_filter_update(_opaque.filter, _translucent.filter, surfaces, dataType);
    const vtkSmartPointer<vtkLookupTable> table = vtk_lut_for_surfaces(surfaces, dataType, colormap);
    for (const Part& part : {_opaque, _translucent}) {
        part.mapper->SetLookupTable(table);
        part.mapper->UseLookupTableScalarRangeOn();
        // Scalars of one byte would else be taken for colours themselves.
        part.mapper->SetColorModeToMapScalars();
        part.mapper->ScalarVisibilityOn();
    }
}

void QUOR3DSurfaces::run() {
    for (const Part& part : {_opaque, _translucent}) {
        if (part.filter->GetNumberOfContours() > 0 && hasThickness(part.filter)) {
            part.filter->Update();
            part.mapper->SetInputData(part.filter->GetOutput());
            _assembly->AddPart(part.actor);
        }
        part.filter->SetInputConnection(nullptr);
    }
}

vtkSmartPointer<vtkProp> QUOR3DSurfaces::getProp() const {
    return _assembly;
}

void vtk_3D_surface_filter_update(vtkFlyingEdges3D* opaque, vtkFlyingEdges3D* translucent,
                                  const QUOR3DSurfaces::Surfaces& surfaces, const QUORDataType& dataType) {
    QUORLog::Instance().logDebug(QStringLiteral("vtk_3D_surface_filter_update() called."));
    opaque->SetNumberOfContours(0);
    translucent->SetNumberOfContours(0);
    int number = 0;
    for (const Surface& surface : toRaw(surfaces, dataType)) {
        QUORLog::Instance().logDebug(QStringLiteral("Surface #%1: iso=%2, opa=%3")
                                         .arg(number++)
                                         .arg(surface.isovalue)
                                         .arg(surface.opacity));
        vtkFlyingEdges3D* filter = surface.opacity == OPAQUE ? opaque : translucent;
        filter->SetValue(int(filter->GetNumberOfContours()), surface.raw);
    }
    QUORLog::Instance().logDebug(QStringLiteral("vtk_3D_surface_filter_update() finished."));
}

vtkSmartPointer<vtkLookupTable> vtk_lut_for_surfaces(const QUOR3DSurfaces::Surfaces& surfaces,
                                                     const QUORDataType& dataType,
                                                     const QUORColormap& colormap) {
    auto table = vtkSmartPointer<vtkLookupTable>::New();
    table->SetNumberOfTableValues(TABLE_SIZE);
    const std::vector<Surface> entries = toRaw(surfaces, dataType);
    if (entries.empty()) {
        table->Build();
        return table;
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        QUORLog::Instance().logDebug(QStringLiteral("lutSurface #%1: iso_abs=%2, iso_disp=%3, opa=%4")
                                         .arg(i)
                                         .arg(entries[i].raw)
                                         .arg(entries[i].isovalue)
                                         .arg(entries[i].opacity));
    }
    const auto byRaw = [](const Surface& a, const Surface& b) { return a.raw < b.raw; };
    const auto [lowest, highest] = std::minmax_element(entries.begin(), entries.end(), byRaw);
    const double low = lowest->raw;
    const double high = highest->raw;
    table->SetTableRange(low, high);
    for (int k = 0; k < TABLE_SIZE; ++k) {
        const Surface& surface = nearest(entries, low + k * (high - low) / TABLE_SIZE);
        const auto [red, green, blue] = colormap.getColor(surface.raw);
        table->SetTableValue(k, red / 255.0, green / 255.0, blue / 255.0, double(surface.opacity) / OPAQUE);
    }
    table->Build();
    return table;
}
