// SPDX-License-Identifier: MIT
#include "QUORLegendDetails.h"

#include "QUORLegend.h"

#include <vtkActor2D.h>
#include <vtkCellArray.h>
#include <vtkCoordinate.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper2D.h>
#include <vtkPropAssembly.h>
#include <vtkProperty2D.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <algorithm>

namespace {

/// Of a line's height: letters, patches of colour, and what stands left of and behind them.
constexpr double LETTERS = 0.52;
constexpr double PATCH = 0.5;
constexpr double GAP = 0.25;
/// Of the box's width: where the text of the legend begins, and what is left free at its end.
constexpr double INDENT = 0.055;
constexpr int LEGEND_LINES = 4;
constexpr int SMALLEST_LETTERS = 6;

double lineHeight() {
    const QUORPictureArea legend = QUORLegend::getArea();
    return (legend.top - legend.bottom) / LEGEND_LINES;
}

/// A rectangle of the viewport, from 0 to 1, or the line round it that is open at the bottom.
vtkSmartPointer<vtkActor2D> makeRectangle(const QUORPictureArea& area, bool isLine) {
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(area.left, area.bottom, 0.0);
    points->InsertNextPoint(area.left, area.top, 0.0);
    points->InsertNextPoint(area.right, area.top, 0.0);
    points->InsertNextPoint(area.right, area.bottom, 0.0);
    vtkNew<vtkCellArray> cells;
    cells->InsertNextCell({0, 1, 2, 3});
    vtkNew<vtkPolyData> data;
    data->SetPoints(points);
    if (isLine) {
        data->SetLines(cells);
    } else {
        data->SetPolys(cells);
    }
    vtkNew<vtkCoordinate> viewport;
    viewport->SetCoordinateSystemToNormalizedViewport();
    vtkNew<vtkPolyDataMapper2D> mapper;
    mapper->SetInputData(data);
    mapper->SetTransformCoordinate(viewport);
    auto actor = vtkSmartPointer<vtkActor2D>::New();
    actor->SetMapper(mapper);
    return actor;
}

/// A square of side 1 at its own place.
vtkSmartPointer<vtkActor2D> makePatch(const std::array<int, 3>& color) {
    auto patch = vtkSmartPointer<vtkActor2D>::New();
    vtkNew<vtkPolyDataMapper2D> mapper;
    patch->SetMapper(mapper);
    patch->GetProperty()->SetColor(color[0] / 255.0, color[1] / 255.0, color[2] / 255.0);
    return patch;
}

void setSide(vtkActor2D* patch, double side) {
    vtkNew<vtkPoints> points;
    points->InsertNextPoint(0.0, 0.0, 0.0);
    points->InsertNextPoint(side, 0.0, 0.0);
    points->InsertNextPoint(side, side, 0.0);
    points->InsertNextPoint(0.0, side, 0.0);
    vtkNew<vtkCellArray> cells;
    cells->InsertNextCell({0, 1, 2, 3});
    vtkNew<vtkPolyData> data;
    data->SetPoints(points);
    data->SetPolys(cells);
    vtkPolyDataMapper2D::SafeDownCast(patch->GetMapper())->SetInputData(data);
}

} // namespace

QUORLegendDetails::QUORLegendDetails(const std::vector<Line>& lines)
    : _prop(vtkSmartPointer<vtkPropAssembly>::New()) {
    if (lines.empty()) {
        return;
    }
    QUORPictureArea area = getArea(lines.size());
    area.bottom = QUORLegend::getArea().top;
    _box = makeRectangle(area, false);
    _border = makeRectangle(area, true);
    _prop->AddPart(_box);
    _prop->AddPart(_border);
    for (const Line& line : lines) {
        std::vector<Piece>& pieces = _lines.emplace_back();
        for (const Entry& entry : line) {
            Piece& piece = pieces.emplace_back();
            piece.text = vtkSmartPointer<vtkTextActor>::New();
            piece.text->SetInput(entry.text.toUtf8().constData());
            vtkTextProperty* text = piece.text->GetTextProperty();
            text->SetFontFamilyToArial();
            text->SetVerticalJustificationToCentered();
            _prop->AddPart(piece.text);
            if (entry.color[0] >= 0) {
                piece.patch = makePatch(entry.color);
                _prop->AddPart(piece.patch);
            }
        }
    }
}

QUORLegendDetails::~QUORLegendDetails() = default;

vtkPropAssembly* QUORLegendDetails::getProp() const {
    return _prop;
}

QUORPictureArea QUORLegendDetails::getArea(std::size_t lines) {
    QUORPictureArea area = QUORLegend::getArea();
    area.top += double(lines) * lineHeight();
    return area;
}

void QUORLegendDetails::setColors(const QUORStyleGroup::Color& text, const QUORStyleGroup::Color& veil) {
    if (!_box) {
        return;
    }
    QUORLegend::setBoxColors(*_box->GetProperty(), text, veil);
    _border->GetProperty()->SetColor(text[0], text[1], text[2]);
    for (const auto& line : _lines) {
        for (const Piece& piece : line) {
            piece.text->GetTextProperty()->SetColor(text[0], text[1], text[2]);
        }
    }
}

void QUORLegendDetails::layOut(int width, int height) {
    const QUORPictureArea area = getArea(_lines.size());
    const double pitch = lineHeight() * height;
    const double left = (area.left + INDENT * (area.right - area.left)) * width;
    const double room = (area.right - INDENT * (area.right - area.left)) * width - left;
    double middle = area.top * height;
    for (const auto& line : _lines) {
        middle -= pitch;
        // Letters as high as the line allows, or as its width does.
        for (int size = std::max(int(LETTERS * pitch), SMALLEST_LETTERS); size >= SMALLEST_LETTERS; --size) {
            const double scale = size / (LETTERS * pitch);
            double x = left;
            for (const Piece& piece : line) {
                if (piece.patch) {
                    const double side = PATCH * pitch * scale;
                    setSide(piece.patch, side);
                    piece.patch->SetPosition(x, middle + 0.5 * (pitch - side));
                    x += side + GAP * pitch * scale;
                }
                piece.text->GetTextProperty()->SetFontSize(size);
                piece.text->SetPosition(x, middle + 0.5 * pitch);
                // About the width of the letters of this face.
                x += (0.56 * double(QString::fromUtf8(piece.text->GetInput()).size()) + 0.6) * size;
            }
            if (x - left <= room) {
                break;
            }
        }
    }
}
