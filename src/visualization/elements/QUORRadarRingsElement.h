// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParametersRadarRings.h"
#include "QUORStyledElement.h"

class QUOR2DLayerActor;

/// Four range rings around the radar with twelve spokes and two distance labels a ring, flat at height 0
/// of its prop and drawn without depth test. Coordinates are metres from the origin; labels count in the
/// record's unit. A radius of 0 or less, or beyond half the earth's girth, shows nothing.
class QUORRadarRingsElement : public QUORStyledElement<QUORLayerParametersRadarRings> {
public:
    QUORRadarRingsElement(QUORVisualGroup* group, int key);

protected:
    vtkSmartPointer<vtkProp> makeProp() const override;

private:
    void addLabels(QUOR2DLayerActor& layer, double unit) const;
};
