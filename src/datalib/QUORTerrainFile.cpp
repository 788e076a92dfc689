// SPDX-License-Identifier: MIT
#include "QUORTerrainFile.h"

#include <vtkImageData.h>
#include <vtkPolyData.h>

QUORTerrainFile::QUORTerrainFile(const QUORCoordinate& origin) : _type(Empty), _origin(origin) {}

QUORTerrainFile::QUORTerrainFile(const QString& fileName) : _fileName(fileName) {}

QUORTerrainFile::~QUORTerrainFile() = default;
