// SPDX-License-Identifier: MIT
#pragma once

#include <vtkFixedPointVolumeRayCastMapper.h>

/// Casts no ray that cannot be told from its neighbours: in a picture of more than 600 rows at most every
/// second pixel has one, between which colours are interpolated, and rays begin and end at the box around
/// what is not transparent.
class QUORVolumeMapper : public vtkFixedPointVolumeRayCastMapper {
public:
    static QUORVolumeMapper* New();
    vtkTypeMacro(QUORVolumeMapper, vtkFixedPointVolumeRayCastMapper)

    /// Nothing is seen of smaller values of the input, which is set before.
    void SetLowestSeen(double value);
    void Render(vtkRenderer* renderer, vtkVolume* volume) override;

    QUORVolumeMapper(const QUORVolumeMapper&) = delete;
    QUORVolumeMapper& operator=(const QUORVolumeMapper&) = delete;

protected:
    QUORVolumeMapper();
    ~QUORVolumeMapper() override;
};
