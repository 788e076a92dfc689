// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

class QUORColormap;
class vtkScalarBarActor;

/// The colour bar of a picture.
namespace QUORColorBar {

/// The map's bar, titled with its unit, to fill the renderer of the colour scale.
vtkSmartPointer<vtkScalarBarActor> make(const QUORColormap& colormap);

} // namespace QUORColorBar
