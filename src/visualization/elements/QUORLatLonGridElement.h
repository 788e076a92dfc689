// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParametersLatLonGrid.h"
#include "QUORStyledElement.h"

#include <QString>

/// Parallels and meridians over the frame's area, projected with its map projection, with a degree label
/// at the ends of each line; drawn without depth test. Without a ready projection it shows nothing. On a
/// Mercator map, which stretches without bound, it ends at 85 degrees.
class QUORLatLonGridElement : public QUORStyledElement<QUORLayerParametersLatLonGrid> {
public:
    QUORLatLonGridElement(QUORVisualGroup* group, int key);

    /// "12.5S"; the bare number for the equator.
    static QString getLatitudeLabel(double lat);
    /// "170W", also for a longitude of 190; the bare number for 0 and 180 degrees.
    static QString getLongitudeLabel(double lon);

protected:
    vtkSmartPointer<vtkProp> makeProp() const override;
};
