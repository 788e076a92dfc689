// SPDX-License-Identifier: MIT
#pragma once

#include "QUORVisualizationPipelineItem.h"

#include <vtkSmartPointer.h>

#include <vector>

class vtkProp;
class vtkPropAssembly;
class vtkRenderer;
class vtkWindow;

/// The props of the visualization that a window shows. Taking a prop out of a VTK renderer throws its
/// graphics buffers away; here the props are parts of two assemblies that stay in their renderers, and what
/// the next visualization shows again keeps its buffers.
///
/// Belongs to the thread that renders. It holds what it shows, so that nothing that was drawn dies on
/// another thread.
class QUORSceneParts {
public:
    using ResultPart = QUORVisualizationPipelineItem::ResultPart;

    /// `statics` is drawn before `rest` and takes terrain, where that comes first.
    QUORSceneParts(vtkRenderer* statics, vtkRenderer* rest);
    ~QUORSceneParts();

    /// Shows these in their order; what is not among them gives its buffers back.
    void show(const std::vector<ResultPart>& parts, vtkWindow* window);
    /// Shows nothing any more. The radar products give their buffers back, since the next visualization
    /// brings new ones; the others are kept for it.
    void hide(vtkWindow* window);
    /// The terrain that is shown, or null.
    vtkProp* getTerrain() const;
    /// Whether the static parts are drawn; they keep their buffers.
    void setStaticsDrawn(bool drawn);
    /// The static parts give their graphics buffers, the larger part of their memory, back to the system and
    /// get new ones when they are drawn again.
    void releaseStatics(vtkWindow* window);

private:
    void remove(const ResultPart& part);
    void setVisible(bool visible);

    vtkSmartPointer<vtkPropAssembly> _statics;
    vtkSmartPointer<vtkPropAssembly> _rest;
    std::vector<ResultPart> _shown;
};
