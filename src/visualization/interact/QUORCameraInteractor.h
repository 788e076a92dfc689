// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"

#include <vtkInteractorStyleUser.h>

class vtkCamera;

/// The camera model of a scene: a position above the ground plane, a viewing direction, and what follows
/// from them. It keeps the camera inside a sphere round the scene's origin and at least 2000 units above
/// the plane z = 0. As the window's interaction style it also turns mouse and keyboard into movements.
///
/// A program moves the camera by one of the movement operations and then `applyCamera`, which writes the
/// model to the current renderer's camera and tells observers (vtkCommand::UserEvent with a `Change`).
/// Lengths are scene units, angles radians. Main thread only.
class QUORCameraInteractor : public vtkInteractorStyleUser {
public:
    /// What the user event's call data points to, as an int.
    enum Change { Moved = 0, Reset = 1 };

    static QUORCameraInteractor* New();
    vtkTypeMacro(QUORCameraInteractor, vtkInteractorStyleUser)

    /// A distance of 0 or less is derived: twice the position's length, and 0.3 of the maximum distance.
    void resetCamera(const QUORPoint3D& position, const QUORPoint3D& direction, double maxDistance,
                     double maxTargetDistance);
    /// Repeats the last reset.
    void resetCamera();
    /// Takes another view and keeps the maximum distances.
    void setView(const QUORPoint3D& position, const QUORPoint3D& direction);
    /// Turns round the target to heading and pitch and moves to `distance` from it.
    void setCameraByHPD(double heading, double pitch, double distance);

    /// Orbits the target. A pitch step that would look up, turn over or sink below the floor is left out.
    void rotateCameraTarget(double dHeading, double dPitch);
    /// Turns the view in place; the pitch stops at 89.9 degrees.
    void rotateCameraView(double dHeading, double dPitch);
    void panCamera(double dx, double dy);
    /// Moves along the view by a fraction of the maximum distance, unless that would reach the floor.
    void zoomCamera(double f);
    void targetToOrigo();
    /// True when the view meets the ground ahead, near enough to the origin to orbit that point.
    bool isTargetLegal() const;
    /// Brings position, direction and all that is derived from them inside their limits.
    void calculateVectors();

    /// Writes the model to the VTK camera; `silent` tells nobody. Needs a current renderer.
    void applyCamera(bool silent);
    /// Asks the window's interactor to render, when there is one.
    void render();
    void printDebug() const;

    const QUORPoint3D& getPosition() const { return _position; }
    /// Of unit length.
    const QUORPoint3D& getDirection() const { return _direction; }
    /// 0 looks along +y, positive turns towards +x.
    double getHeading() const { return _heading; }
    /// Positive when looking down.
    double getPitch() const { return _pitch; }
    /// Where the view meets the ground, pulled inside the maximum distance.
    const QUORPoint3D& getTarget() const { return _target; }
    double getTargetDistance() const { return _targetDistance; }
    double getMaxDistance() const { return _maxDistance; }
    double getMaxTargetDistance() const { return _maxTargetDistance; }

    void OnMouseMove() override;
    void OnLeftButtonDown() override;
    void OnLeftButtonUp() override;
    void OnMiddleButtonDown() override;
    void OnMiddleButtonUp() override;
    void OnRightButtonDown() override;
    void OnRightButtonUp() override;
    void OnMouseWheelForward() override;
    void OnMouseWheelBackward() override;
    void OnKeyDown() override;
    void OnKeyPress() override;
    void OnKeyRelease() override;
    void OnChar() override;

protected:
    QUORCameraInteractor();
    ~QUORCameraInteractor() override = default;

private:
    QUORCameraInteractor(const QUORCameraInteractor&) = delete;
    void operator=(const QUORCameraInteractor&) = delete;

    vtkCamera* findCamera();
    void straightenDirection();
    void updateTarget();
    bool isControlHeld() const;
    void finishMovement();
    void approachTarget(double share);
    bool moveByKey(const char* name);
    bool isSwallowed() const;

    QUORPoint3D _position;
    QUORPoint3D _direction;
    vtkCamera* _camera = nullptr;
    double _panFactor = 0.0;
    double _rotateFactor = 0.0;
    double _zoomFactor = 0.0;
    QUORPoint3D _resetPosition;
    QUORPoint3D _resetDirection;
    double _maxDistance = 0.0;
    double _maxTargetDistance = 0.0;
    double _pitch = 0.0;
    double _heading = 0.0;
    double _targetDistance = 0.0;
    QUORPoint3D _target;
    QUORPoint3D _forward;
    QUORPoint3D _right;
    bool _resetPending = false;
    bool _viewTurnMode = false;
};
