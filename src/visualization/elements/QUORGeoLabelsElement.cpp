// SPDX-License-Identifier: MIT
#include "QUORGeoLabelsElement.h"

#include "QUORAssert.h"
#include "QUORGeoProjection.h"
#include "QUORLandmarkSet.h"

#include <vtkPropAssembly.h>

#include <cmath>
#include <vector>

namespace {

constexpr QUORElementTexts TEXTS{"QUORGeoLabelsElement", "Creating new  visualization.", true, false};

constexpr double HEIGHT_ABOVE_GROUND = 150.0;
constexpr int LARGEST_SIZE = 11;

} // namespace

QUORGeoLabelsElement::QUORGeoLabelsElement(QUORVisualGroup* group, int key)
    : QUORTypedVisualElement(group, key, TEXTS) {}

void QUORGeoLabelsElement::invalidate() {
    _params.reset();
    _prop = nullptr;
    _labels.clear();
    _labelled.reset();
    QUORLog::Instance().logDebug(QStringLiteral("QUORGeoLabelsElement::invalidate() finished."));
}

void QUORGeoLabelsElement::rebuild(const QUORAbortFlag& /*abort*/) {
    createVTK();
}

void QUORGeoLabelsElement::createVTK() {
    const QUORLogScope scope("QUORGeoLabelsElement::createVTK");
    const std::shared_ptr<const QUORLandmarkSet> landmarks = _params->getLandmarks();
    if (!QUOR_VERIFY(landmarks) || !QUOR_VERIFY(_params->getGeoProjection())) {
        _prop = nullptr;
        _labelled.reset();
        return;
    }
    const bool first = !_labelled || landmarks->getLandmarks() != _labelled->getLandmarks();
    QUORLog::Instance().logDebug(first ? QStringLiteral("Create landmark labels:")
                                       : QStringLiteral("Update landmark labels:"));
    QUORLog::Instance().logDebug(QStringLiteral("- vertScale=") +
                                 QString::number(_params->getVerticalScale()));
    if (first) {
        makeLabels(*landmarks);
    }
    _labelled = landmarks;
    placeLabels(*landmarks);
}

void QUORGeoLabelsElement::makeLabels(const QUORLandmarkSet& landmarks) {
    auto assembly = vtkSmartPointer<vtkPropAssembly>::New();
    _labels.clear();
    for (const QUORLandmark::Ptr& landmark : landmarks.getLandmarks()) {
        auto label = vtkSmartPointer<QUORLandmarkLabel>::New();
        label->SetText(landmark->getLabel());
        label->SetColor(landmark->getR(), landmark->getG(), landmark->getB());
        label->SetSize(LARGEST_SIZE - int(landmark->getPriority()));
        _labels.append(label);
        assembly->AddPart(label);
    }
    _prop = assembly;
}

void QUORGeoLabelsElement::placeLabels(const QUORLandmarkSet& landmarks) {
    std::vector<QUORCoordinate> locations;
    for (const QUORLandmark::Ptr& landmark : landmarks.getLandmarks()) {
        locations.push_back(landmark->getLocation());
    }
    std::vector<QUORPoint3D> points(locations.size());
    const QUORGeoProjection& projection = *_params->getGeoProjection();
    projection.projectFromLatLon(locations, points);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double z = (landmarks.getLandmarks()[qsizetype(i)]->getAlt() + HEIGHT_ABOVE_GROUND) *
                         _params->getVerticalScale();
        // The origin is what a failed projection gives.
        const bool placed = std::isfinite(z) && (points[i].x != 0.0 || points[i].y != 0.0 ||
                                                 locations[i] == projection.getReferenceLocation());
        _labels[qsizetype(i)]->SetWorldPosition(points[i].x, points[i].y, z);
        _labels[qsizetype(i)]->SetVisibility(placed);
    }
}
