// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFile.h"

#include <vtkSmartPointer.h>

#include <optional>

class vtkAlgorithm;
class vtkImageData;

/// The image of a 3D product, reduced by the shrink factors and smoothed; values outside its data type's
/// range become the stored value `noData`, the data type's own where none is given. Its voxels have the
/// spacing (1, 1, 5) before the reduction. What is returned holds the finished image and nothing of the file;
/// null, with error and history lines that name the file, when the grid cannot be read.
vtkSmartPointer<vtkAlgorithm> vtk_3D_data_create(const QUORFile::CPtr& file, int horizontalShrink,
                                                 int verticalShrink, double smooth,
                                                 std::optional<unsigned int> noData = {});
