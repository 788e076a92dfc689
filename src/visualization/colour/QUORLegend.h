// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureArea.h"
#include "QUORStyleGroup.h"

#include <vtkSmartPointer.h>

#include <QStringList>

class QUORLegendBox;
class vtkProperty2D;

/// The box of text lines in the lower left corner of a picture.
namespace QUORLegend {

/// Lines in order from the top. Each is also logged, as "Legend " with its index and the text.
vtkSmartPointer<QUORLegendBox> make(const QStringList& lines);

/// Where the box lies.
QUORPictureArea getArea();

/// Text colour, and what lies under the text so that it can be read on any scene: light text stands on the
/// legend's black box, dark text on a light veil.
void setColors(QUORLegendBox* legend, const QUORStyleGroup::Color& text, const QUORStyleGroup::Color& veil);

/// Of a box that belongs to the legend.
void setBoxColors(vtkProperty2D& box, const QUORStyleGroup::Color& text, const QUORStyleGroup::Color& veil);

} // namespace QUORLegend
