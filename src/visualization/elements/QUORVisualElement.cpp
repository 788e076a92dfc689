// SPDX-License-Identifier: MIT
#include "QUORVisualElement.h"

#include "QUOR2DVisualElement.h"
#include "QUOR3DOutlineElement.h"
#include "QUOR3DTerrainElement.h"
#include "QUOR3DVisualElement.h"
#include "QUORAssert.h"
#include "QUORDisplayState.h"
#include "QUORGeoLabelsElement.h"
#include "QUORLatLonGridElement.h"
#include "QUORRadarRingsElement.h"

#include <vtkAssembly.h>
#include <vtkProp.h>
#include <vtkProp3DCollection.h>

#include <algorithm>
#include <array>

namespace {

template <class Element>
QUORVisualElement::Ptr make(QUORVisualGroup* group, int key) {
    return std::make_shared<Element>(group, key);
}

struct Kind {
    int key;
    QUORVisualElement::Ptr (*make)(QUORVisualGroup*, int);
};

constexpr std::array<Kind, 7> KINDS{{
    {QUORDisplayState::OUTLINE_LAYER, &make<QUOR3DOutlineElement>},
    {QUORDisplayState::PRODUCT_3D_LAYER, &make<QUOR3DVisualElement>},
    {QUORDisplayState::PRODUCT_2D_LAYER, &make<QUOR2DVisualElement>},
    {QUORDisplayState::TERRAIN_LAYER, &make<QUOR3DTerrainElement>},
    {QUORDisplayState::LAT_LON_GRID_LAYER, &make<QUORLatLonGridElement>},
    {QUORDisplayState::GEO_LABELS_LAYER, &make<QUORGeoLabelsElement>},
    {QUORDisplayState::RANGE_RINGS_LAYER, &make<QUORRadarRingsElement>},
}};

} // namespace

QUORVisualElement::Ptr QUORVisualElement::makeElement(QUORVisualGroup* group, int key) {
    QUOR_ASSERT(group != nullptr);
    const auto kind = std::find_if(KINDS.begin(), KINDS.end(), [key](const Kind& k) { return k.key == key; });
    QUOR_ASSERT(kind != KINDS.end());
    return kind->make(group, key);
}

QUORVisualElement::QUORVisualElement(QUORVisualGroup* group, int key) : _group(group), _key(key) {}

vtkSmartPointer<vtkProp> QUORVisualElement::getProp() {
    return {};
}

bool QUORVisualElement::isEmpty() {
    const vtkSmartPointer<vtkProp> prop = getProp();
    if (prop && _key == QUORDisplayState::TERRAIN_LAYER) {
        vtkAssembly* assembly = vtkAssembly::SafeDownCast(prop);
        return assembly != nullptr && assembly->GetParts()->GetNumberOfItems() == 0;
    }
    return !prop;
}

void QUORVisualElement::moveTo(QUORVisualGroup* group) {
    QUOR_ASSERT(group != nullptr);
    _group = group;
}
