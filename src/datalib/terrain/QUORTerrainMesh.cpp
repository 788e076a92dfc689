// SPDX-License-Identifier: MIT
#include "QUORTerrainMesh.h"

#include "QUORCoordinate.h"
#include "QUORGeoProjection.h"
#include "QUORTerrainBlock.h"
#include "QUORTerrainGrid.h"

#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkImageData.h>
#include <vtkMath.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// Two neighbouring posts are 2 km apart on the earth: more than this is a torn or endlessly stretched map.
constexpr double MAX_STEP_M = 100000.0;
/// A tile is 111 km high: less than this is a map that gave no positions.
constexpr double MIN_HEIGHT_M = 1000.0;

using Points = std::vector<QUORPoint3D>;

std::vector<QUORCoordinate> makeLocations(int side, const QUORCoordinate& origin) {
    std::vector<QUORCoordinate> locations;
    locations.reserve(static_cast<std::size_t>(side) * side);
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            locations.emplace_back(origin.getLat() + double(row) / (side - 1),
                                   origin.getLon() + double(column) / (side - 1));
        }
    }
    return locations;
}

bool isNear(const QUORPoint3D& a, const QUORPoint3D& b) {
    return std::hypot(a.x - b.x, a.y - b.y) <= MAX_STEP_M; // false for what is not a number
}

bool isConnected(const Points& points, int side) {
    const QUORPoint3D& northWest = points[points.size() - side];
    if (!(std::hypot(northWest.x - points[0].x, northWest.y - points[0].y) >= MIN_HEIGHT_M)) {
        return false;
    }
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            const QUORPoint3D* point = &points[static_cast<std::size_t>(row) * side + column];
            if ((column + 1 < side && !isNear(point[0], point[1])) ||
                (row + 1 < side && !isNear(point[0], point[side]))) {
                return false;
            }
        }
    }
    return true;
}

vtkSmartPointer<vtkFloatArray> makeNormals(const Points& points, int side) {
    auto normals = vtkSmartPointer<vtkFloatArray>::New();
    normals->SetName("Normals");
    normals->SetNumberOfComponents(3);
    normals->SetNumberOfTuples(vtkIdType(points.size()));
    const auto difference = [&](int fromRow, int fromColumn, int toRow, int toColumn, double* result) {
        const auto index = [side](int row, int column) {
            return static_cast<std::size_t>(std::clamp(row, 0, side - 1)) * side +
                   std::clamp(column, 0, side - 1);
        };
        const QUORPoint3D& from = points[index(fromRow, fromColumn)];
        const QUORPoint3D& to = points[index(toRow, toColumn)];
        result[0] = to.x - from.x;
        result[1] = to.y - from.y;
        result[2] = to.z - from.z;
    };
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            double east[3];
            double north[3];
            double normal[3];
            difference(row, column - 1, row, column + 1, east);
            difference(row - 1, column, row + 1, column, north);
            vtkMath::Cross(east, north, normal);
            if (vtkMath::Normalize(normal) <= 0.0) { // a whole edge is one point at a pole
                normal[2] = 1.0;
            }
            normals->SetTuple(vtkIdType(row) * side + column, normal);
        }
    }
    return normals;
}

vtkSmartPointer<vtkFloatArray> makeTextureCoordinates(int side) {
    auto coordinates = vtkSmartPointer<vtkFloatArray>::New();
    coordinates->SetName("Texture");
    coordinates->SetNumberOfComponents(2);
    coordinates->SetNumberOfTuples(vtkIdType(side) * side);
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            coordinates->SetTuple2(vtkIdType(row) * side + column, double(column) / (side - 1),
                                   double(row) / (side - 1));
        }
    }
    return coordinates;
}

vtkSmartPointer<vtkCellArray> makeStrips(int side) {
    auto strips = vtkSmartPointer<vtkCellArray>::New();
    for (int row = 0; row + 1 < side; ++row) {
        strips->InsertNextCell(2 * side);
        for (int column = 0; column < side; ++column) {
            strips->InsertCellPoint(vtkIdType(row + 1) * side + column);
            strips->InsertCellPoint(vtkIdType(row) * side + column);
        }
    }
    return strips;
}

bool isFinite(vtkDataArray* array, int components) {
    if (array == nullptr || array->GetNumberOfTuples() != QUORTerrainBlock::POINTS ||
        array->GetNumberOfComponents() != components) {
        return false;
    }
    for (vtkIdType i = 0; i < QUORTerrainBlock::POINTS; ++i) {
        for (int c = 0; c < components; ++c) {
            if (!std::isfinite(array->GetComponent(i, c))) {
                return false;
            }
        }
    }
    return true;
}

void joinNormals(vtkPolyData& a, vtkPolyData& b, vtkIdType startA, vtkIdType startB, vtkIdType stride) {
    vtkDataArray* normalsA = a.GetPointData()->GetNormals();
    vtkDataArray* normalsB = b.GetPointData()->GetNormals();
    for (vtkIdType i = 0; i < QUORTerrainBlock::SIDE; ++i) {
        double normal[3];
        double other[3];
        normalsA->GetTuple(startA + i * stride, normal);
        normalsB->GetTuple(startB + i * stride, other);
        vtkMath::Add(normal, other, normal);
        vtkMath::Normalize(normal);
        normalsA->SetTuple(startA + i * stride, normal);
        normalsB->SetTuple(startB + i * stride, normal);
    }
}

} // namespace

vtkSmartPointer<vtkPolyData> QUORTerrainMesh::make(const QUORTerrainGrid& grid, const QUORCoordinate& origin,
                                                   const QUORGeoProjection& projection) {
    const std::vector<QUORCoordinate> locations = makeLocations(grid.side, origin);
    Points points(locations.size());
    projection.projectFromLatLon(locations, points);
    if (!projection.isReady() || !isConnected(points, grid.side)) {
        return nullptr;
    }
    auto meshPoints = vtkSmartPointer<vtkPoints>::New();
    meshPoints->SetNumberOfPoints(vtkIdType(points.size()));
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].z = grid.heights[i];
        meshPoints->SetPoint(vtkIdType(i), points[i].x, points[i].y, points[i].z);
    }
    auto mesh = vtkSmartPointer<vtkPolyData>::New();
    mesh->SetPoints(meshPoints);
    mesh->SetStrips(makeStrips(grid.side));
    mesh->GetPointData()->SetNormals(makeNormals(points, grid.side));
    mesh->GetPointData()->SetTCoords(makeTextureCoordinates(grid.side));
    return mesh;
}

bool QUORTerrainMesh::isWhole(vtkPolyData& mesh) {
    constexpr int SIDE = QUORTerrainBlock::SIDE;
    vtkCellArray* strips = mesh.GetStrips();
    vtkPointData* data = mesh.GetPointData();
    if (mesh.GetNumberOfPoints() != QUORTerrainBlock::POINTS || strips->GetNumberOfCells() != SIDE - 1 ||
        mesh.GetNumberOfCells() != SIDE - 1 ||
        strips->GetNumberOfConnectivityIds() != vtkIdType(SIDE - 1) * 2 * SIDE) {
        return false;
    }
    vtkDataArray* ids = strips->GetConnectivityArray();
    double range[2];
    ids->GetRange(range);
    return range[0] >= 0.0 && range[1] < QUORTerrainBlock::POINTS &&
           isFinite(mesh.GetPoints()->GetData(), 3) && isFinite(data->GetNormals(), 3) &&
           isFinite(data->GetTCoords(), 2);
}

void QUORTerrainMesh::joinEastWest(vtkPolyData& west, vtkPolyData& east) {
    joinNormals(west, east, QUORTerrainBlock::SIDE - 1, 0, QUORTerrainBlock::SIDE);
}

void QUORTerrainMesh::joinSouthNorth(vtkPolyData& south, vtkPolyData& north) {
    joinNormals(south, north, QUORTerrainBlock::POINTS - QUORTerrainBlock::SIDE, 0, 1);
}
