// SPDX-License-Identifier: MIT
#pragma once

#include "QUORProductSettings.h"

#include <vtkSmartPointer.h>

class QUORColormap;
class QUORDataType;
class vtkActor;
class vtkAlgorithm;
class vtkAssembly;
class vtkFlyingEdges3D;
class vtkLookupTable;
class vtkPolyDataMapper;
class vtkProp;

/// The isosurfaces of a 3D product. Opaque and translucent surfaces have an actor each, because within one
/// actor opaque surfaces would shine through translucent ones that lie in front.
class QUOR3DSurfaces {
public:
    using Surfaces = QUORProductSettings::SurfaceParContainer;

    explicit QUOR3DSurfaces(vtkAlgorithm* data);
    ~QUOR3DSurfaces();

    /// Sets contour values and colours; the colour map is in raw values.
    void update(const Surfaces& surfaces, const QUORDataType& dataType, const QUORColormap& colormap);
    /// Contours. Afterwards the actors hold their geometry and nothing of the data.
    void run();
    vtkSmartPointer<vtkProp> getProp() const;

private:
    struct Part {
        vtkSmartPointer<vtkFlyingEdges3D> filter;
        vtkSmartPointer<vtkPolyDataMapper> mapper;
        vtkSmartPointer<vtkActor> actor;
    };

    static Part makePart(vtkAlgorithm* data);

    Part _opaque;
    Part _translucent;
    vtkSmartPointer<vtkAssembly> _assembly;
};

/// Gives each filter the raw values of its surfaces, those of 100 percent opacity to `opaque`.
void vtk_3D_surface_filter_update(vtkFlyingEdges3D* opaque, vtkFlyingEdges3D* translucent,
                                  const QUOR3DSurfaces::Surfaces& surfaces, const QUORDataType& dataType);

/// 256 entries from the lowest to the highest raw isovalue, each with the colour and the opacity of the
/// surface that is nearest to it.
vtkSmartPointer<vtkLookupTable> vtk_lut_for_surfaces(const QUOR3DSurfaces::Surfaces& surfaces,
                                                     const QUORDataType& dataType,
                                                     const QUORColormap& colormap);
