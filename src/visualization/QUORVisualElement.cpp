// SPDX-License-Identifier: MIT
#include "QUORVisualElement.h"

#include "QUORAssert.h"

#include <vtkProp.h>

#include <algorithm>
#include <array>

#if __has_include("QUOR2DVisualElement.h")
#include "QUOR2DVisualElement.h"
#define HAS_2D
#endif
#if __has_include("QUOR3DOutlineElement.h")
#include "QUOR3DOutlineElement.h"
#define HAS_OUTLINE
#endif
#if __has_include("QUOR3DTerrainElement.h")
#include "QUOR3DTerrainElement.h"
#define HAS_TERRAIN
#endif
#if __has_include("QUOR3DVisualElement.h")
#include "QUOR3DVisualElement.h"
#define HAS_3D
#endif
#if __has_include("QUORGeoLabelsElement.h")
#include "QUORGeoLabelsElement.h"
#define HAS_LABELS
#endif
#if __has_include("QUORLatLonGridElement.h")
#include "QUORLatLonGridElement.h"
#define HAS_GRID
#endif
#if __has_include("QUORRadarRingsElement.h")
#include "QUORRadarRingsElement.h"
#define HAS_RINGS
#endif

namespace {

/// Stands in for a kind that has not been written yet.
class EmptyElement : public QUORVisualElement {
public:
    EmptyElement(QUORVisualGroup* group, int key) : QUORVisualElement(group, key) {}
    void update(std::shared_ptr<const QUORLayerParameters> /*params*/, bool /*visible*/,
                const QUORAbortFlag& /*abort*/) override {}
};

template <class Element>
QUORVisualElement::Ptr make(QUORVisualGroup* group, int key) {
    return std::make_shared<Element>(group, key);
}

struct Kind {
    int key;
    QUORVisualElement::Ptr (*make)(QUORVisualGroup*, int);
};

constexpr std::array<Kind, 7> KINDS{{
#ifdef HAS_OUTLINE
    {11, &make<QUOR3DOutlineElement>},
#else
    {11, &make<EmptyElement>},
#endif
#ifdef HAS_3D
    {12, &make<QUOR3DVisualElement>},
#else
    {12, &make<EmptyElement>},
#endif
#ifdef HAS_2D
    {13, &make<QUOR2DVisualElement>},
#else
    {13, &make<EmptyElement>},
#endif
#ifdef HAS_TERRAIN
    {41, &make<QUOR3DTerrainElement>},
#else
    {41, &make<EmptyElement>},
#endif
#ifdef HAS_GRID
    {42, &make<QUORLatLonGridElement>},
#else
    {42, &make<EmptyElement>},
#endif
#ifdef HAS_LABELS
    {43, &make<QUORGeoLabelsElement>},
#else
    {43, &make<EmptyElement>},
#endif
#ifdef HAS_RINGS
    {44, &make<QUORRadarRingsElement>},
#else
    {44, &make<EmptyElement>},
#endif
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

void QUORVisualElement::moveTo(QUORVisualGroup* group) {
    QUOR_ASSERT(group != nullptr);
    _group = group;
}
