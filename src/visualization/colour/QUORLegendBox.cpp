// SPDX-License-Identifier: MIT
#include "QUORLegendBox.h"

#include <vtkActor2D.h>
#include <vtkObjectFactory.h>
#include <vtkPolyData.h>
#include <vtkTextMapper.h>
#include <vtkTextProperty.h>
#include <vtkViewport.h>

vtkStandardNewMacro(QUORLegendBox)

QUORLegendBox::QUORLegendBox() = default;

QUORLegendBox::~QUORLegendBox() = default;

QUORLegendBox::Layout QUORLegendBox::FindLayout(vtkViewport* viewport) {
    Layout layout;
    if (this->NumberOfEntries < 1) {
        return layout;
    }
    this->RenderOpaqueGeometry(viewport); // places its parts; none of them is drawn in this pass
    const double* bounds = this->BorderPolyData->GetBounds();
    layout.left = bounds[0];
    layout.right = bounds[1];
    layout.top = bounds[3];
    layout.textLeft = this->TextActor[0]->GetPosition()[0];
    layout.fontSize = this->TextMapper[0]->GetTextProperty()->GetFontSize();
    return layout;
}
