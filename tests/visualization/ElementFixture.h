// SPDX-License-Identifier: MIT
#pragma once

#include "LogCapture.h"
#include "QUORAbortFlag.h"
#include "QUORVisualGroup.h"
#include "ScratchHome.h"

#include <gtest/gtest.h>

#include <vtkProp3D.h>
#include <vtkProp3DCollection.h>

#include <memory>
#include <vector>

/// One element in its group, with an empty settings directory and a log of its own.
template <class Element, int Key>
class ElementFixture : public ::testing::Test {
protected:
    template <class Record>
    void update(const Record& record, bool visible = true) {
        element.update(std::make_shared<const Record>(record), visible, abort);
    }

    ScratchHome home;
    LogCapture log;
    QUORAbortFlag abort;
    QUORVisualGroup::Ptr group = QUORVisualGroup::makeGroup(Key < 40 ? 10 : 40);
    Element element{group.get(), Key};
};

/// The parts of an assembly that are of that class, in order.
template <class Part, class Assembly>
std::vector<Part*> partsOf(Assembly* assembly) {
    std::vector<Part*> parts;
    assembly->GetParts()->InitTraversal();
    while (auto* part = assembly->GetParts()->GetNextProp3D()) {
        if (auto* wanted = Part::SafeDownCast(part))
            parts.push_back(wanted);
    }
    return parts;
}
