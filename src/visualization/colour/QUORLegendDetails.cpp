// SPDX-License-Identifier: MIT
#include "QUORLegendDetails.h"

#include "QUORLegend.h"

#include <vtkActor2D.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper2D.h>
#include <vtkPropAssembly.h>
#include <vtkProperty2D.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>
#include <vtkViewport.h>

#include <algorithm>
#include <cmath>

namespace {

/// Of the letters' size: a patch of colour, and the gaps after it and after an entry.
constexpr double PATCH = 1.0;
constexpr double PATCH_GAP = 0.45;
constexpr double ENTRY_GAP = 0.8;
/// Of a line's height: the largest letters that leave lines apart.
constexpr double MOST_LETTERS = 0.7;
/// Pixels left free at the end of a line.
constexpr double MARGIN = 3.0;
constexpr int LEGEND_LINES = 4;
constexpr int SMALLEST_LETTERS = 6;

double lineHeight() {
    const QUORPictureArea legend = QUORLegend::getArea();
    return (legend.top - legend.bottom) / LEGEND_LINES;
}

using Places = std::array<std::array<double, 2>, 4>;

/// An area with these corners, or the line round it that is open between the last and the first.
void setShape(vtkActor2D* actor, const Places& corners, bool isLine) {
    vtkNew<vtkPoints> points;
    for (const auto& [x, y] : corners) {
        points->InsertNextPoint(x, y, 0.0);
    }
    vtkNew<vtkCellArray> cells;
    cells->InsertNextCell({0, 1, 2, 3});
    vtkNew<vtkPolyData> data;
    data->SetPoints(points);
    if (isLine) {
        data->SetLines(cells);
    } else {
        data->SetPolys(cells);
    }
    vtkPolyDataMapper2D::SafeDownCast(actor->GetMapper())->SetInputData(data);
}

vtkSmartPointer<vtkActor2D> makeShape() {
    auto actor = vtkSmartPointer<vtkActor2D>::New();
    vtkNew<vtkPolyDataMapper2D> mapper;
    actor->SetMapper(mapper);
    return actor;
}

} // namespace

QUORLegendDetails::QUORLegendDetails(const std::vector<Line>& lines)
    : _prop(vtkSmartPointer<vtkPropAssembly>::New()) {
    if (lines.empty()) {
        return;
    }
    _box = makeShape();
    _border = makeShape();
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
                piece.patch = makeShape();
                piece.patch->GetProperty()->SetColor(entry.color[0] / 255.0, entry.color[1] / 255.0,
                                                     entry.color[2] / 255.0);
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

void QUORLegendDetails::layOut(vtkViewport* viewport, const QUORLegendBox::Layout& legend) {
    if (!_box || legend == _legend) {
        return;
    }
    _legend = legend;
    const int height = viewport->GetSize()[1];
    const double pitch = lineHeight() * height;
    const double top = legend.top + double(_lines.size()) * pitch;
    const Places corners{
        {{legend.left, legend.top}, {legend.left, top}, {legend.right, top}, {legend.right, legend.top}}};
    setShape(_box, corners, false);
    setShape(_border, corners, true);
    double middle = top + 0.5 * pitch;
    for (const auto& line : _lines) {
        middle -= pitch;
        int size = std::max(std::min(legend.fontSize, int(MOST_LETTERS * pitch)), SMALLEST_LETTERS);
        while (!place(line, viewport, legend, middle, size) && size > SMALLEST_LETTERS) {
            --size;
        }
    }
}

bool QUORLegendDetails::place(const std::vector<Piece>& line, vtkViewport* viewport,
                              const QUORLegendBox::Layout& legend, double middle, int fontSize) {
    double x = legend.textLeft;
    double end = x;
    for (const Piece& piece : line) {
        if (piece.patch) {
            const double side = PATCH * fontSize;
            setShape(piece.patch, {{{0.0, 0.0}, {side, 0.0}, {side, side}, {0.0, side}}}, false);
            piece.patch->SetPosition(x, std::round(middle - 0.5 * side));
            x += side + PATCH_GAP * fontSize;
        }
        piece.text->GetTextProperty()->SetFontSize(fontSize);
        piece.text->SetPosition(x, middle);
        std::array<double, 2> size{};
        piece.text->GetSize(viewport, size.data());
        end = x + size[0];
        x = end + ENTRY_GAP * fontSize;
    }
    return end <= legend.right - MARGIN;
}
