// SPDX-License-Identifier: MIT
#pragma once

#include "LogCapture.h"
#include "QUOR2DLayerActor.h"
#include "QUORAbortFlag.h"
#include "QUORVisualGroup.h"
#include "ScratchHome.h"

#include <gtest/gtest.h>

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkProp3DCollection.h>

#include <memory>
#include <vector>

/// The parts of an assembly that are of that class, in order.
template <class Part, class Assembly>
std::vector<Part*> partsOf(Assembly* assembly) {
    std::vector<Part*> parts;
    assembly->GetParts()->InitTraversal();
    while (auto* part = assembly->GetParts()->GetNextProp3D()) {
        if (auto* wanted = Part::SafeDownCast(part)) {
            parts.push_back(wanted);
        }
    }
    return parts;
}

/// One element in its group, with an empty settings directory and a log of its own.
template <class Element, int Key>
class ElementFixture : public ::testing::Test {
protected:
    template <class Record>
    void update(const Record& record, bool visible = true) {
        element.update(std::make_shared<const Record>(record), visible, abort);
    }

    /// The actors of the element's prop, a layer actor or an assembly, in order.
    std::vector<vtkActor*> actors() {
        const vtkSmartPointer<vtkProp> prop = element.getProp();
        auto* layer = QUOR2DLayerActor::SafeDownCast(prop);
        auto* assembly = layer ? layer->GetAssembly() : vtkAssembly::SafeDownCast(prop);
        return assembly ? partsOf<vtkActor>(assembly) : std::vector<vtkActor*>{};
    }

    ScratchHome home;
    LogCapture log;
    QUORAbortFlag abort;
    QUORVisualGroup::Ptr group = QUORVisualGroup::makeGroup(Key < 40 ? 10 : 40);
    Element element{group.get(), Key};
};
