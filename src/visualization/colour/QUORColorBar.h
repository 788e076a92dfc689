// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

#include <QList>

class QUORColormap;
class vtkScalarBarActor;

/// The colour bar of a picture.
namespace QUORColorBar {

/// The map's bar, titled with its unit, to fill the renderer of the colour scale.
vtkSmartPointer<vtkScalarBarActor> make(const QUORColormap& colormap);

/// The round values that a bar of so many pixels would label, ascending; empty where the map has no scale.
QList<double> pickValues(const QUORColormap& colormap, int pixels);

} // namespace QUORColorBar
