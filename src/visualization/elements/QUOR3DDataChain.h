// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFile.h"

#include <vtkSmartPointer.h>

class vtkAlgorithm;
class vtkImageData;

/// The image of a 3D product, cleaned of values outside its data type's range, reduced by the shrink
/// factors and smoothed. Its voxels have the spacing (1, 1, 5) before the reduction. What is returned
/// holds the finished image and nothing of the file; null, with error and history lines that name the
/// file, when the grid cannot be read.
vtkSmartPointer<vtkAlgorithm> vtk_3D_data_create(const QUORFile::CPtr& file, int horizontalShrink,
                                                 int verticalShrink, double smooth);
