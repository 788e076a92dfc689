// SPDX-License-Identifier: MIT
#pragma once

#include "QUORStyleGroup.h"

#include <vtkSmartPointer.h>

class vtkActor;
class vtkAlgorithm;
class vtkCellArray;
class vtkPoints;

/// An actor that draws the line cells over the points as opaque wireframe without lighting; the width is
/// in pixels.
vtkSmartPointer<vtkActor> quorMakeLineActor(vtkPoints* points, vtkCellArray* lines,
                                            const QUORStyleGroup::Color& color, double width);

/// The same for the edges of what the source makes.
vtkSmartPointer<vtkActor> quorMakeLineActor(vtkAlgorithm* source, const QUORStyleGroup::Color& color,
                                            double width);
