// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters3dOutline.h"
#include "QUORStyledElement.h"

#include <vtkSmartPointer.h>

class vtkActor;

/// The edges of the box that the 3D product occupies, with ticks on the vertical edges at regular heights
/// above sea level. Drawn in a unit box (x and y -0.5..0.5, z 0..1) that the controller scales and
/// places over the data.
class QUOR3DOutlineElement : public QUORStyledElement<QUORLayerParameters3dOutline> {
public:
    QUOR3DOutlineElement(QUORVisualGroup* group, int key);

protected:
    vtkSmartPointer<vtkProp> makeProp() const override;

private:
    vtkSmartPointer<vtkActor> makeBox() const;
    vtkSmartPointer<vtkActor> makeTicks() const;
};
