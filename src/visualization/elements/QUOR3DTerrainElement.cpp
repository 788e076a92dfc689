// SPDX-License-Identifier: MIT
#include "QUOR3DTerrainElement.h"

#include "QUORAbortFlag.h"
#include "QUORAssert.h"
#include "QUORStyleGroup.h"
#include "QUORTerrainSet.h"

#include <vtkProp3D.h>

namespace {

constexpr QUORElementTexts TEXTS{"QUOR3DTerrainElement", "Creating new  visualization.", false, false};

} // namespace

QUOR3DTerrainElement::QUOR3DTerrainElement(QUORVisualGroup* group, int key)
    : QUORTypedVisualElement(group, key, TEXTS) {}

void QUOR3DTerrainElement::invalidate() {
    _params.reset();
    _prop = nullptr;
    QUORLog::Instance().logDebug(QStringLiteral("QUOR3DTerrainElement::invalidate() finished."));
}

void QUOR3DTerrainElement::rebuild(const QUORAbortFlag& abort) {
    createVTK(abort);
    if (abort) {
        QUORLog::Instance().logDebug(QStringLiteral("QUOR3DTerrainElement::update(): ABORTED!"));
        _params.reset(); // the same record is worth another try
    }
}

void QUOR3DTerrainElement::createVTK(const QUORAbortFlag& abort) {
    const QUORLogScope scope("QUOR3DTerrainElement::createVTK");
    _prop = nullptr;
    const QUORTerrainSet::CPtr set = _params->getTerrainSet();
    if (!QUOR_VERIFY(set)) {
        return;
    }
    if (!set->getProp()) {
        set->loadFiles(abort);
    }
    QUORStyleGroup style("RENDERER");
    style.load(false);
    set->showMissing(style.number("terrain/missing") > 0.5);
    _prop = set->getProp();
    if (abort) {
        QUORLog::Instance().logDebug(QStringLiteral("QUOR3DTerrainElement::createVTK(): ABORTED!"));
    }
}
