// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLegendBox.h"
#include "QUORPictureArea.h"
#include "QUORStyleGroup.h"

#include <vtkSmartPointer.h>

#include <QString>

#include <array>
#include <vector>

class vtkActor2D;
class vtkPropAssembly;
class vtkTextActor;
class vtkViewport;

/// Further lines of the legend, in a box that stands on the legend's and looks like a part of it. Main thread
/// only.
class QUORLegendDetails {
public:
    /// A part of a line, with a patch of its colour before it where it has one.
    struct Entry {
        QString text;
        /// 0 to 255; negative for none.
        std::array<int, 3> color{-1, -1, -1};
    };
    using Line = std::vector<Entry>;

    /// From the top; an empty list is no box.
    explicit QUORLegendDetails(const std::vector<Line>& lines);
    ~QUORLegendDetails();
    QUORLegendDetails(const QUORLegendDetails&) = delete;
    QUORLegendDetails& operator=(const QUORLegendDetails&) = delete;

    vtkPropAssembly* getProp() const;
    /// As of the legend.
    void setColors(const QUORStyleGroup::Color& text, const QUORStyleGroup::Color& veil);
    /// Places everything in line with the legend as it lies in that picture.
    void layOut(vtkViewport* viewport, const QUORLegendBox::Layout& legend);
    /// The legend's box with that many further lines on it.
    static QUORPictureArea getArea(std::size_t lines);
    std::size_t countLines() const { return _lines.size(); }

private:
    struct Piece {
        vtkSmartPointer<vtkTextActor> text;
        vtkSmartPointer<vtkActor2D> patch;
    };

    /// False where the letters are too large for the line; `middle` is its height in the picture.
    bool place(const std::vector<Piece>& line, vtkViewport* viewport, const QUORLegendBox::Layout& legend,
               double middle, int fontSize);

    std::vector<std::vector<Piece>> _lines;
    QUORLegendBox::Layout _legend;
    vtkSmartPointer<vtkActor2D> _box;
    vtkSmartPointer<vtkActor2D> _border;
    vtkSmartPointer<vtkPropAssembly> _prop;
};
