// SPDX-License-Identifier: MIT
#include "QUORCameraInteractor.h"

#include "QUORAssert.h"
#include "QUORLog.h"
#include "QUORUnits.h"
#include "QUORViewGeometry.h"

#include <vtkCallbackCommand.h>
#include <vtkCamera.h>
#include <vtkObjectFactory.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

vtkStandardNewMacro(QUORCameraInteractor)

namespace {

constexpr double FLOOR_HEIGHT = 2000.0;
constexpr double NEAR_DISTANCE = 100.0;
constexpr double NUDGE = 0.000001;
constexpr double PITCH_LIMIT = 1.5690509957500003;
constexpr double PITCH_LIMIT_SINE = 0.9999984769101585;
constexpr double PITCH_LIMIT_COSINE = 0.0017453301587975797;
constexpr double PAN_SCALE = 0.001;
/// Of the distance to the target, for a step of the wheel.
constexpr double WHEEL_SHARE = 0.1;

constexpr QUORPoint3D VERTICAL{0.0, 0.0, 1.0};

using namespace QUORViewGeometry;

QUORPoint3D pitchAxis(const QUORPoint3D& position, const QUORPoint3D& target) {
    const QUORPoint3D v = normalised(target - position);
    return {v.y, -v.x, 0.0};
}

/// Of a rotation: headings and pitches grow clockwise about their axes.
double degrees(double radians) {
    return radians * -180.0 / QUORUnits::PI;
}

/// A pitch step must neither turn the view over nor make it look up.
bool keepsLookingDown(const QUORPoint3D& before, const QUORPoint3D& after) {
    return before.x * after.x + before.y * after.y > 0.0 && after.z < 0.0;
}

} // namespace

QUORCameraInteractor::QUORCameraInteractor() {
    resetCamera({0.0, 0.0, 2000000.0}, {0.0, NUDGE, -1.0}, 0.0, 0.0);
}

vtkCamera* QUORCameraInteractor::findCamera() {
    if (_camera == nullptr && this->CurrentRenderer != nullptr) {
        _camera = this->CurrentRenderer->GetActiveCamera();
    }
    return _camera;
}

void QUORCameraInteractor::resetCamera(const QUORPoint3D& position, const QUORPoint3D& direction,
                                       double maxDistance, double maxTargetDistance) {
    findCamera();
    _panFactor = 0.5;
    _rotateFactor = 0.002;
    _zoomFactor = 0.05;
    _resetPosition = position;
    _resetDirection = normalised(direction);
    _position = _resetPosition;
    _direction = _resetDirection;
    _maxDistance = maxDistance > 0.0 ? maxDistance : 2.0 * length(_position);
    _maxTargetDistance = maxTargetDistance > 0.0 ? maxTargetDistance : 0.3 * _maxDistance;
    calculateVectors();
    _resetPending = true;
}

void QUORCameraInteractor::resetCamera() {
    resetCamera(_resetPosition, _resetDirection, _maxDistance, _maxTargetDistance);
}

void QUORCameraInteractor::setView(const QUORPoint3D& position, const QUORPoint3D& direction) {
    _position = position;
    _direction = direction;
    calculateVectors();
}

// A vertical view leans a little away from the origin, which keeps heading and up-vector defined.
void QUORCameraInteractor::straightenDirection() {
    _direction = normalised(_direction);
    if (_direction.x != 0.0 || _direction.y != 0.0) {
        return;
    }
    if (_position.x == 0.0 && _position.y == 0.0) {
        _position.y = NUDGE;
    }
    const double r = std::hypot(_position.x, _position.y);
    _direction = normalised({_position.x / r * NUDGE, _position.y / r * NUDGE, -1.0});
}

void QUORCameraInteractor::updateTarget() {
    const double t = (0.0 - _position.z) / _direction.z;
    const QUORPoint3D target = _position + _direction * t;
    // A level view meets the ground nowhere: the last target stands.
    if (isFinite(target)) {
        _target = target;
    }
    _target = pulledInside(_target, _maxDistance);
    _targetDistance = length(_target - _position);
}

void QUORCameraInteractor::calculateVectors() {
    straightenDirection();
    _position.z = std::max(_position.z, FLOOR_HEIGHT);
    _position = pulledInside(_position, _maxDistance);
    _heading = std::atan2(_direction.x, _direction.y);
    _pitch = -std::atan2(_direction.z, std::hypot(_direction.x, _direction.y));
    updateTarget();
    _forward = normalised({_direction.x, _direction.y, 0.0});
    _right = normalised({_direction.y, -_direction.x, 0.0});
}

void QUORCameraInteractor::applyCamera(bool silent) {
    findCamera();
    QUOR_ASSERT(_camera);
    calculateVectors();
    const QUORPoint3D focus = _position + _direction * std::abs(_targetDistance);
    _camera->SetPosition(_position.x, _position.y, _position.z);
    _camera->SetFocalPoint(focus.x, focus.y, focus.z);
    _camera->SetViewUp(VERTICAL.x, VERTICAL.y, VERTICAL.z);
    _camera->OrthogonalizeViewUp();
    _camera->SetClippingRange(NEAR_DISTANCE, 2.0 * _maxDistance);
    int change = _resetPending ? Reset : Moved;
    if (!silent) {
        this->InvokeEvent(vtkCommand::UserEvent, &change);
    }
    _resetPending = false;
}

void QUORCameraInteractor::zoomCamera(double f) {
    double step = f * _maxDistance;
    if (step != 0.0 && std::abs(step) < 1.0) {
        step = std::copysign(1.0, step);
    }
    _direction = normalised(_direction);
    const QUORPoint3D position = _position + _direction * step;
    if (position.z > FLOOR_HEIGHT) {
        _position = position;
    }
}

void QUORCameraInteractor::panCamera(double dx, double dy) {
    const double k = _targetDistance * PAN_SCALE;
    _position = _position + _right * (dx * k) + _forward * (dy * k);
    calculateVectors();
}

void QUORCameraInteractor::rotateCameraView(double dHeading, double dPitch) {
    const double pitch = _pitch + dPitch;
    const double heading = _heading + dHeading;
    const bool beyond = std::abs(pitch) > PITCH_LIMIT;
    const double sine = beyond ? std::copysign(PITCH_LIMIT_SINE, pitch) : std::sin(pitch);
    const double cosine = beyond ? PITCH_LIMIT_COSINE : std::cos(pitch);
    _direction = {std::sin(heading) * cosine, std::cos(heading) * cosine, -sine};
    calculateVectors();
}

void QUORCameraInteractor::rotateCameraTarget(double dHeading, double dPitch) {
    const View swung = turned({_position, _direction}, _target, VERTICAL, degrees(dHeading));
    setView(swung.position, swung.direction);
    const View tilted =
        turned({_position, _direction}, _target, pitchAxis(_position, _target), degrees(dPitch));
    if (keepsLookingDown(_direction, tilted.direction) && tilted.position.z >= FLOOR_HEIGHT) {
        setView(tilted.position, tilted.direction);
    }
}

void QUORCameraInteractor::setCameraByHPD(double heading, double pitch, double distance) {
    const double cosine = std::cos(heading) * std::cos(_heading) + std::sin(heading) * std::sin(_heading);
    const double sine = std::sin(_heading) * std::cos(heading) - std::cos(_heading) * std::sin(heading);
    const double change = std::acos(std::clamp(cosine, -1.0, 1.0));
    const View swung =
        turned({_position, _direction}, _target, VERTICAL, degrees(sine > 0.0 ? -change : change));
    setView(swung.position, swung.direction);
    if (_direction.z < 0.0) {
        const View tilted =
            turned({_position, _direction}, _target, pitchAxis(_position, _target), degrees(pitch - _pitch));
        if (keepsLookingDown(_direction, tilted.direction) && _position.z > FLOOR_HEIGHT) {
            setView(tilted.position, tilted.direction);
        }
    }
    if (_targetDistance > 0.0) {
        _position = _target + normalised(_position - _target) * distance;
        calculateVectors();
    }
}

void QUORCameraInteractor::targetToOrigo() {
    _target = {};
    _direction = normalised(_target - _position);
    _position.z = std::max(_position.z, FLOOR_HEIGHT);
    calculateVectors();
}

bool QUORCameraInteractor::isTargetLegal() const {
    const double t = -_position.z / _direction.z;
    return t > 0.0 && length(_position + _direction * t) <= _maxTargetDistance;
}

void QUORCameraInteractor::render() {
    if (this->Interactor != nullptr) {
        this->Interactor->Render();
    }
}

void QUORCameraInteractor::printDebug() const {
    const auto text = [](const QUORPoint3D& p) {
        return QStringLiteral("%1, %2, %3").arg(p.x).arg(p.y).arg(p.z);
    };
    QUORLog::Instance().logDebug(QStringLiteral("Cam: pos=(") + text(_position) + QStringLiteral(", dir=(") +
                                 text(_direction));
}

bool QUORCameraInteractor::isControlHeld() const {
    return this->Interactor->GetControlKey() != 0;
}

void QUORCameraInteractor::finishMovement() {
    this->InvokeEvent(vtkCommand::InteractionEvent);
    applyCamera(false);
    render();
}

void QUORCameraInteractor::OnLeftButtonDown() {
    const int* at = this->Interactor->GetEventPosition();
    this->FindPokedRenderer(at[0], at[1]);
    if (this->CurrentRenderer == nullptr) {
        return;
    }
    _viewTurnMode = isControlHeld() || !isTargetLegal();
    this->GrabFocus(this->EventCallbackCommand);
    this->StartRotate();
}

void QUORCameraInteractor::OnLeftButtonUp() {
    if (this->State == VTKIS_ROTATE) {
        _viewTurnMode = isControlHeld();
        this->EndRotate();
        this->ReleaseFocus();
    }
}

void QUORCameraInteractor::OnMiddleButtonDown() {
    _viewTurnMode = isControlHeld();
    this->GrabFocus(this->EventCallbackCommand);
    this->StartDolly();
}

void QUORCameraInteractor::OnMiddleButtonUp() {
    if (this->State == VTKIS_DOLLY) {
        _viewTurnMode = isControlHeld();
        this->EndDolly();
        this->ReleaseFocus();
    }
}

void QUORCameraInteractor::OnRightButtonDown() {
    _viewTurnMode = isControlHeld();
    this->GrabFocus(this->EventCallbackCommand);
    this->StartPan();
}

void QUORCameraInteractor::OnRightButtonUp() {
    if (this->State == VTKIS_PAN) {
        _viewTurnMode = isControlHeld();
        this->EndPan();
        this->ReleaseFocus();
    }
}

void QUORCameraInteractor::OnMouseMove() {
    const int* now = this->Interactor->GetEventPosition();
    const int* last = this->Interactor->GetLastEventPosition();
    const double dx = now[0] - last[0];
    const double dy = now[1] - last[1];
    switch (this->State) {
    case VTKIS_PAN:
        panCamera(dx * _panFactor, dy * _panFactor);
        break;
    case VTKIS_DOLLY:
        zoomCamera(dy * _zoomFactor * -0.1);
        break;
    case VTKIS_ROTATE:
        if (this->Interactor->GetShiftKey() != 0) {
            panCamera(dx * _panFactor, dy * _panFactor);
        } else if (!_viewTurnMode && isTargetLegal()) {
            rotateCameraTarget(dx * _rotateFactor, dy * _rotateFactor);
        } else {
            rotateCameraView(dx * -_rotateFactor, dy * _rotateFactor);
        }
        break;
    default:
        render();
        return;
    }
    finishMovement();
}

void QUORCameraInteractor::approachTarget(double share) {
    if (this->State != VTKIS_DOLLY) {
        zoomCamera(share * _targetDistance / _maxDistance);
        finishMovement();
    }
}

void QUORCameraInteractor::OnMouseWheelForward() {
    approachTarget(WHEEL_SHARE);
}

void QUORCameraInteractor::OnMouseWheelBackward() {
    approachTarget(-WHEEL_SHARE);
}

/// False when the key moves nothing. Steps multiply the factors in single precision.
bool QUORCameraInteractor::moveByKey(const char* name) {
    struct Arrow {
        std::string_view key;
        int x;
        int y;
    };
    constexpr std::array<Arrow, 4> ARROWS{{{"Left", -1, 0}, {"Right", 1, 0}, {"Up", 0, 1}, {"Down", 0, -1}}};
    const std::string_view key = name != nullptr ? name : "";
    const auto turn = float(_rotateFactor) * 4.0F;
    const auto pan = float(_panFactor) * 20.0F;
    const auto zoom = float(_zoomFactor) * 0.2F;
    if (key == "plus" || key == "minus") {
        zoomCamera(key == "plus" ? zoom : -zoom);
        return true;
    }
    const auto* arrow =
        std::find_if(ARROWS.begin(), ARROWS.end(), [&](const Arrow& a) { return a.key == key; });
    if (arrow == ARROWS.end()) {
        return false;
    }
    if (isControlHeld()) {
        rotateCameraView(turn * float(arrow->x), -turn * float(arrow->y));
    } else if (this->Interactor->GetShiftKey() != 0) {
        rotateCameraTarget(turn * float(arrow->x), -turn * float(arrow->y));
    } else {
        panCamera(pan * float(arrow->x), pan * float(arrow->y));
    }
    return true;
}

void QUORCameraInteractor::OnKeyDown() {
    switch (this->Interactor->GetKeyCode()) {
    case 'w':
    case 's':
    case 'W':
    case 'S':
        return;
    case 'r':
        resetCamera();
        break;
    case 't':
        targetToOrigo();
        break;
    default:
        if (!moveByKey(this->Interactor->GetKeySym())) {
            render();
            return;
        }
    }
    finishMovement();
}

bool QUORCameraInteractor::isSwallowed() const {
    const char code = this->Interactor->GetKeyCode();
    return code != '\0' && std::string_view("rRsSwWfF").find(code) != std::string_view::npos;
}

void QUORCameraInteractor::OnKeyPress() {
    if (!isSwallowed()) {
        this->Superclass::OnKeyPress();
    }
}

void QUORCameraInteractor::OnKeyRelease() {
    if (this->State != VTKIS_ROTATE) {
        _viewTurnMode = isControlHeld();
    }
    this->Superclass::OnKeyRelease();
}

void QUORCameraInteractor::OnChar() {
    if (!isSwallowed()) {
        this->Superclass::OnChar();
    }
}
