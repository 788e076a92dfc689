// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParametersRadarRings.h"
#include "QUORStyleGroup.h"
#include "QUORTypedVisualElement.h"

class QUOR2DLayerActor;

/// Four range rings around the radar with twelve spokes and two distance labels a ring, flat at height 0
/// of its prop and drawn without depth test. Coordinates are metres from the origin; labels count in the
/// record's unit. A radius of 0 or less, or beyond half the earth's girth, shows nothing.
class QUORRadarRingsElement : public QUORTypedVisualElement<QUORLayerParametersRadarRings> {
public:
    QUORRadarRingsElement(QUORVisualGroup* group, int key);

    void invalidate() override;
    void loadStyle(bool night);

protected:
    void rebuild(const QUORAbortFlag& abort) override;

private:
    void createVTK();
    void addLabels(QUOR2DLayerActor& layer, double unit) const;

    QUORStyleGroup _style;
};
