// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters3d.h"
#include "QUORStopwatch.h"
#include "QUORTypedVisualElement.h"

#include <memory>

class QUOR3DSurfaces;
class QUOR3DVolume;
class vtkAlgorithm;

/// The 3D radar product as coloured isosurfaces or as a volume. The data are read and reduced at each new
/// record; the display chain is built on them when the layer is first visible.
class QUOR3DVisualElement : public QUORTypedVisualElement<QUORLayerParameters3d> {
public:
    QUOR3DVisualElement(QUORVisualGroup* group, int key);
    ~QUOR3DVisualElement() override;

    void invalidate() override;

    /// Gives the finished image; null when there are no data.
    vtkSmartPointer<vtkAlgorithm> getData() const;

protected:
    void rebuild(const QUORAbortFlag& abort) override;
    void show(bool visible) override;

private:
    void createVTKData();
    void createVTK();
    /// False for an unknown rendering type.
    bool updateVTK();
    void runAlgorithm();
    void dropDisplay();

    vtkSmartPointer<vtkAlgorithm> _data;
    std::unique_ptr<QUOR3DSurfaces> _surfaces;
    std::unique_ptr<QUOR3DVolume> _volume;
    QUORStopwatch _watch;
    bool _rebuilt = false;
};
