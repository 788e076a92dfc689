// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters2d.h"
#include "QUORTypedVisualElement.h"

#include <vtkSmartPointer.h>

#include <memory>

class QUORColormap;
class QUORFile;
class vtkActor;
class vtkAlgorithm;
class vtkDataSetMapper;

/// The 2D product as a flat grid of coloured cells, one scene unit a grid step; cells without data are
/// left out. Drawn without depth test. A hidden layer keeps only its data until it is first shown; a file
/// that cannot be read leaves the layer empty and is named in the log and the history.
class QUOR2DVisualElement : public QUORTypedVisualElement<QUORLayerParameters2d> {
public:
    QUOR2DVisualElement(QUORVisualGroup* group, int key);
    ~QUOR2DVisualElement() override;

    void invalidate() override;

protected:
    void rebuild(const QUORAbortFlag& abort) override;
    void show(bool visible) override;

private:
    void createVTKData();
    void createVTK();
    void dropDisplay();

    /// The threshold filter at the end of the data chain, up to date; null without data.
    vtkSmartPointer<vtkAlgorithm> _data;
    std::shared_ptr<QUORColormap> _colormap;
    vtkSmartPointer<vtkDataSetMapper> _mapper;
    vtkSmartPointer<vtkActor> _actor;
};
