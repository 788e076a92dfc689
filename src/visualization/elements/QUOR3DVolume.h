// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters3d.h"

#include <vtkSmartPointer.h>

class QUORColormap;
class QUORDataType;
class vtkAlgorithm;
class vtkAssembly;
class vtkPiecewiseFunction;
class vtkProp;
class vtkVolume;
class vtkVolumeMapper;

/// A 3D product drawn as a volume whose opacity rises between two values.
class QUOR3DVolume {
public:
    /// `hardware`: draw on a graphics card.
    QUOR3DVolume(vtkAlgorithm* data, bool hardware);
    ~QUOR3DVolume();

    /// Sets colours and opacities; the colour map is in raw values.
    void update(const QUORLayerParameters3d& params, const QUORDataType& dataType,
                const QUORColormap& colormap);
    void run();
    vtkSmartPointer<vtkProp> getProp() const;

    /// The opacity of a raw value: from 0 below the lower limit steeply up to the higher one.
    static vtkSmartPointer<vtkPiecewiseFunction> makeRamp(const QUORLayerParameters3d& params,
                                                          const QUORDataType& dataType);

private:
    vtkSmartPointer<vtkVolumeMapper> _mapper;
    vtkSmartPointer<vtkVolume> _volume;
    vtkSmartPointer<vtkAssembly> _assembly;
};
