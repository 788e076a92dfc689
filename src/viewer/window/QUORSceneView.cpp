// SPDX-License-Identifier: MIT
#include "QUORSceneView.h"

#include "QUORCameraInteractor.h"
#include "QUORCompassRepresentation.h"
#include "QUORGridPlacement.h"
#include "QUORPointWidget.h"
#include "QUORRenderWindowFactory.h"
#include "QUORRenderer.h"
#include "QUORViewFit.h"
#include "QUORViewPlan.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <vtkCommand.h>
#include <vtkGenericRenderWindowInteractor.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkUnsignedCharArray.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int SETTLING_MS = 150;
/// What a picture may cost while the view moves, and what is so little that a larger one may be tried.
constexpr double MOST_MS = 45.0;
constexpr double LITTLE_MS = 18.0;
/// Of the sides of the full picture.
constexpr std::array SHARES{1.0, 0.7, 0.5, 0.35, 0.25, 0.18};
constexpr int WHEEL_STEP = 120;
constexpr int MOST_WHEEL_STEPS = 10;

struct KeyRow {
    int key;
    const char* name;
};
/// Keys that the scene itself answers, by the names that its interactor has for them.
constexpr std::array KEYS{
    KeyRow{Qt::Key_Left, "Left"}, KeyRow{Qt::Key_Right, "Right"}, KeyRow{Qt::Key_Up, "Up"},
    KeyRow{Qt::Key_Down, "Down"}, KeyRow{Qt::Key_Plus, "plus"},   KeyRow{Qt::Key_Minus, "minus"},
    KeyRow{Qt::Key_R, "r"},       KeyRow{Qt::Key_T, "t"},
};

struct PointKey {
    int key;
    int x;
    int y;
    int z;
};
constexpr std::array POINT_KEYS{
    PointKey{Qt::Key_Left, -1, 0, 0}, PointKey{Qt::Key_Right, 1, 0, 0},  PointKey{Qt::Key_Up, 0, 1, 0},
    PointKey{Qt::Key_Down, 0, -1, 0}, PointKey{Qt::Key_PageUp, 0, 0, 1}, PointKey{Qt::Key_PageDown, 0, 0, -1},
};
constexpr int WIDE_STEP = 10;

QUORPoint3D toPoint(const double* values) {
    return {values[0], values[1], values[2]};
}

} // namespace

using namespace QUORViewGeometry;

QUORSceneView::QUORSceneView(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Scene"));
    _settling.setSingleShot(true);
    _settling.setInterval(SETTLING_MS);
    connect(&_settling, &QTimer::timeout, this, &QUORSceneView::settle);
    createWindow();
}

QUORSceneView::~QUORSceneView() {
    _scene = {};
    _renderer.reset();
    _interactor = nullptr;
    _window = nullptr;
}

void QUORSceneView::createWindow() {
    _window = QUORRenderWindowFactory::create(_error);
    if (_window == nullptr) {
        return;
    }
    _hardware = QUORRenderWindowFactory::isHardware(_window);
    _interactor = vtkSmartPointer<vtkGenericRenderWindowInteractor>::New();
    _interactor->SetRenderWindow(_window);
    _interactor->EnableRenderOff();
    _interactor->Initialize();
    _renderer = std::make_unique<QUORRenderer>(_window, static_cast<QUORCameraInteractorObserver*>(this),
                                               static_cast<QUORPointWidgetObserver*>(this), false);
    _interactor->AddObserver(vtkCommand::RenderEvent, this, &QUORSceneView::onRenderAsked);
}

void QUORSceneView::onRenderAsked() {
    _renderAsked = !_isDrawing;
}

// The scene

void QUORSceneView::showScene(const QUORViewerScene& scene, const QUORGeneralSettings::CPtr& settings,
                              const QUORDisplayState& state) {
    if (!isReady()) {
        return;
    }
    const bool first = !_scene.isComplete();
    const QUORViewerScene previous = _scene; // dies when the renderer has let go of it
    _scene = scene;
    _verticalScale = settings->getVerticalScale();
    _renderer->setInfoData(scene.frame, settings, state.has2DEnabled());
    _renderer->setVisualization(scene.item);
    applyOpacity(state);
    setScenePlace();
    if (first) {
        lookFrom(0.0, 90.0);
    }
    _isDirty = true;
    update();
}

// The cross-hair spans the volume and keeps its place.
void QUORSceneView::setScenePlace() {
    const QUORFile& file = *_scene.leaf->getFile();
    const QUORGridPlacement grid = QUORGridPlacement::ofVolume(file, _verticalScale);
    const QUORPoint3D far =
        grid.toScene({file.getXPoints() - 1.0, file.getYPoints() - 1.0, file.getZPoints() - 1.0});
    _groundHeight = file.getRadarElevation() * _verticalScale;
    std::array<double, 6> bounds{grid.origin.x, far.x, grid.origin.y, far.y, grid.origin.z, far.z};
    QUORPointWidget* widget = _renderer->getPointWidget();
    widget->setVerticalScale(_verticalScale);
    widget->setHomePosition({0.0, 0.0, double(file.getRadarElevation())});
    widget->setHomeLabel(_scene.leaf->getSite());
    widget->setPointColor({255, 60, 40});
    if (!_hasPoint) {
        widget->SetPlaceFactor(1.0);
        widget->PlaceWidget(bounds.data());
    }
    widget->setBounds(bounds.data());
    if (!_hasPoint) {
        widget->SetPosition(0.5 * (grid.origin.x + far.x), 0.5 * (grid.origin.y + far.y),
                            0.5 * (grid.origin.z + far.z));
        _hasPoint = true;
    }
    _renderer->togglePointWidget(_isReading, true);
    if (_isReading) {
        widget->update();
    }
}

void QUORSceneView::applyOpacity(const QUORDisplayState& state) {
    if (_scene.isComplete()) {
        _opacity.apply(*_scene.item, state);
        _isDirty = true;
        update();
    }
}

void QUORSceneView::setNight(bool night) {
    _night = night;
    if (isReady()) {
        _renderer->setNight(night);
        _renderer->updateLights();
        _isDirty = true;
        update();
    }
}

void QUORSceneView::setReading(bool on) {
    _isReading = on;
    if (isReady()) {
        _renderer->togglePointWidget(on, false);
        if (on && _scene.isComplete()) {
            _renderer->getPointWidget()->resetActors();
            _renderer->getPointWidget()->update();
        }
        _isDirty = true;
        update();
    }
}

void QUORSceneView::movePoint(int x, int y, int z) {
    if (!isReady() || !_isReading || !_scene.isComplete()) {
        return;
    }
    QUORPointWidget* widget = _renderer->getPointWidget();
    const QUORGridPlacement grid = QUORGridPlacement::ofVolume(*_scene.leaf->getFile(), _verticalScale);
    const QUORFile& file = *_scene.leaf->getFile();
    const QUORPoint3D at = grid.toGrid(widget->getPoint());
    const auto step = [](double place, int by, int count) {
        return std::clamp(std::round(place) + by, 0.0, count - 1.0);
    };
    const QUORPoint3D to = grid.toScene({step(at.x, x, file.getXPoints()), step(at.y, y, file.getYPoints()),
                                         step(at.z, z, file.getZPoints())});
    widget->SetPosition(to.x, to.y, to.z);
    widget->update();
    _isDirty = true;
    update();
}

void QUORSceneView::beginLine() {
    if (isReady() && _isReading) {
        const QUORPoint3D point = _renderer->getPointWidget()->getPoint();
        _line = {point, point};
    }
}

void QUORSceneView::endLine() {
    if (isReady() && _isReading && _line) {
        showLine(_line->first, _renderer->getPointWidget()->getPoint());
    }
}

void QUORSceneView::showLine(const QUORPoint3D& from, const QUORPoint3D& to) {
    _line = {from, to};
    update();
    if (from.x != to.x || from.y != to.y) {
        Q_EMIT lineDrawn(from, to);
    }
}

void QUORSceneView::setDrawingLine(bool on) {
    _isDrawingLine = on;
    _isDraggingLine = false;
    _line.reset();
    setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
    update();
}

// The view

QUORSceneView::View QUORSceneView::getView() const {
    if (!isReady()) {
        return {};
    }
    const QUORCameraInteractor* camera = _renderer->getCameraInteractor();
    return {camera->getPosition(), camera->getDirection()};
}

void QUORSceneView::applyView(const View& view) {
    if (isReady()) {
        QUORCameraInteractor* camera = _renderer->getCameraInteractor();
        camera->setView(view.position, view.direction);
        camera->applyCamera(false);
        _isDirty = true;
        update();
    }
}

void QUORSceneView::setView(const View& view) {
    applyView(view);
    rememberView();
}

void QUORSceneView::lookFrom(double heading, double pitch) {
    if (_scene.isComplete()) {
        const auto [lower, upper] = _scene.getCorners(_verticalScale);
        const QSize size = fullSize();
        setView(QUORViewFit(lower, upper)
                    .find(heading, pitch,
                          {double(size.width()), double(size.height()), _renderer->getTakenAreas()}));
    }
}

void QUORSceneView::fit() {
    const QUORViewPlan plan = QUORViewPlan::of(getView());
    lookFrom(plan.heading, std::clamp(plan.pitch, 5.0, 90.0));
}

void QUORSceneView::undo() {
    if (canUndo()) {
        applyView(_history.undo());
        Q_EMIT viewChanged();
    }
}

void QUORSceneView::redo() {
    if (canRedo()) {
        applyView(_history.redo());
        Q_EMIT viewChanged();
    }
}

void QUORSceneView::rememberView() {
    if (isReady()) {
        _history.add(getView());
        Q_EMIT viewChanged();
    }
}

void QUORSceneView::cameraMoved(QUORCameraInteractor* /*camera*/) {
    _isDirty = true;
}

void QUORSceneView::cameraReset(QUORCameraInteractor* /*camera*/) {
    _isDirty = true;
}

void QUORSceneView::pointMoved(QUORPointWidget* /*widget*/, const QUORPoint3D& point) {
    Q_EMIT placeChosen({point.x, point.y, point.z / _verticalScale});
}

// Events

void QUORSceneView::send(unsigned long event, const QPointF& position, Qt::KeyboardModifiers modifiers) {
    if (!isReady()) {
        return;
    }
    const double ratio = devicePixelRatioF();
    const QSize size = fullSize();
    _renderAsked = false;
    _window->SetSize(size.width(), size.height());
    _interactor->SetSize(size.width(), size.height());
    _interactor->SetEventInformationFlipY(int(position.x() * ratio), int(position.y() * ratio),
                                          modifiers.testFlag(Qt::ControlModifier) ? 1 : 0,
                                          modifiers.testFlag(Qt::ShiftModifier) ? 1 : 0);
    _interactor->InvokeEvent(event);
}

int QUORSceneView::compassState() const {
    return _renderer ? _renderer->getCompass()->GetInteractionState() : 0;
}

void QUORSceneView::noteMovement() {
    if (_renderAsked || _isDirty) {
        _isMoving = true;
        _isDirty = true;
        _settling.start();
        update();
    }
}

// While a button is held the user may go on at once.
void QUORSceneView::settle() {
    if ((QGuiApplication::mouseButtons() & (Qt::LeftButton | Qt::RightButton | Qt::MiddleButton)) &&
        underMouse()) {
        _settling.start();
        return;
    }
    rememberView();
    _isMoving = false;
    _isDirty = true;
    update();
}

void QUORSceneView::mousePressEvent(QMouseEvent* event) {
    if (_isDrawingLine && event->button() == Qt::LeftButton) {
        _lineFrom = _lineTo = event->position();
        _isDraggingLine = true;
        _line.reset();
        update();
        return;
    }
    const unsigned long press = event->button() == Qt::LeftButton     ? vtkCommand::LeftButtonPressEvent
                                : event->button() == Qt::RightButton  ? vtkCommand::RightButtonPressEvent
                                : event->button() == Qt::MiddleButton ? vtkCommand::MiddleButtonPressEvent
                                                                      : vtkCommand::NoEvent;
    if (press != vtkCommand::NoEvent) {
        send(press, event->position(), event->modifiers());
        noteMovement();
    }
}

void QUORSceneView::mouseMoveEvent(QMouseEvent* event) {
    if (_isDrawingLine && (event->buttons() & Qt::LeftButton)) {
        _lineTo = event->position();
        update();
        return;
    }
    const int compass = compassState();
    send(vtkCommand::MouseMoveEvent, event->position(), event->modifiers());
    if (event->buttons() != Qt::NoButton) {
        noteMovement();
    } else if (compassState() != compass) {
        _isDirty = true;
        update();
    }
}

void QUORSceneView::mouseReleaseEvent(QMouseEvent* event) {
    if (_isDrawingLine && event->button() == Qt::LeftButton) {
        _lineTo = event->position();
        _isDraggingLine = false;
        update();
        if (_scene.isComplete() && (_lineTo - _lineFrom).manhattanLength() > 2.0) {
            showLine(groundAt(_lineFrom), groundAt(_lineTo));
        }
        return;
    }
    const unsigned long release = event->button() == Qt::LeftButton     ? vtkCommand::LeftButtonReleaseEvent
                                  : event->button() == Qt::RightButton  ? vtkCommand::RightButtonReleaseEvent
                                  : event->button() == Qt::MiddleButton ? vtkCommand::MiddleButtonReleaseEvent
                                                                        : vtkCommand::NoEvent;
    if (release != vtkCommand::NoEvent) {
        send(release, event->position(), event->modifiers());
        noteMovement();
    }
}

// A touch pad gives many small parts of a step.
void QUORSceneView::wheelEvent(QWheelEvent* event) {
    event->accept();
    const int delta = event->angleDelta().y();
    _wheel = (delta > 0) == (_wheel > 0) ? _wheel + delta : delta;
    const int steps = std::clamp(_wheel / WHEEL_STEP, -MOST_WHEEL_STEPS, MOST_WHEEL_STEPS);
    if (steps == 0) {
        return;
    }
    _wheel %= WHEEL_STEP;
    for (int i = 0; i < std::abs(steps); ++i) {
        send(steps > 0 ? vtkCommand::MouseWheelForwardEvent : vtkCommand::MouseWheelBackwardEvent,
             event->position(), event->modifiers());
    }
    noteMovement();
}

bool QUORSceneView::sendKey(unsigned long event, const QKeyEvent& key) {
    const auto* row =
        std::find_if(KEYS.begin(), KEYS.end(), [&](const KeyRow& k) { return k.key == key.key(); });
    const bool command =
        key.modifiers().testFlag(Qt::AltModifier) ||
        (key.modifiers().testFlag(Qt::ControlModifier) && (key.key() == Qt::Key_R || key.key() == Qt::Key_T));
    if (row == KEYS.end() || command || !isReady()) {
        return false;
    }
    const QString text = key.text();
    const char code = text.size() == 1 ? text.at(0).toLatin1() : '\0';
    _renderAsked = false;
    _interactor->SetControlKey(key.modifiers().testFlag(Qt::ControlModifier) ? 1 : 0);
    _interactor->SetShiftKey(key.modifiers().testFlag(Qt::ShiftModifier) && code != '+' ? 1 : 0);
    _interactor->SetKeyCode(code);
    _interactor->SetKeySym(row->name);
    _interactor->InvokeEvent(event);
    return true;
}

// The point of the cross-hair by the keys, in steps of the grid.
bool QUORSceneView::moveByKey(const QKeyEvent& key) {
    const auto* row = std::find_if(POINT_KEYS.begin(), POINT_KEYS.end(),
                                   [&](const PointKey& k) { return k.key == key.key(); });
    if (!_isReading || !key.modifiers().testFlag(Qt::AltModifier) || row == POINT_KEYS.end()) {
        return false;
    }
    const int steps = key.modifiers().testFlag(Qt::ShiftModifier) ? WIDE_STEP : 1;
    movePoint(steps * row->x, steps * row->y, steps * row->z);
    return true;
}

void QUORSceneView::keyPressEvent(QKeyEvent* event) {
    if (moveByKey(*event)) {
        return;
    }
    if (!sendKey(vtkCommand::KeyPressEvent, *event)) {
        QWidget::keyPressEvent(event);
        return;
    }
    noteMovement();
}

void QUORSceneView::keyReleaseEvent(QKeyEvent* event) {
    if (!sendKey(vtkCommand::KeyReleaseEvent, *event)) {
        QWidget::keyReleaseEvent(event);
    }
}

void QUORSceneView::leaveEvent(QEvent* event) {
    const int compass = compassState();
    send(vtkCommand::MouseMoveEvent, QPointF(width() / 2.0, height() / 2.0), Qt::NoModifier);
    if (compassState() != compass) {
        _isDirty = true;
        update();
    }
    QWidget::leaveEvent(event);
}

// Arrow keys move the camera, and not the focus or a toolbar.
bool QUORSceneView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool arrow = key->key() >= Qt::Key_Left && key->key() <= Qt::Key_Down;
        if (arrow && !key->modifiers().testFlag(Qt::AltModifier)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void QUORSceneView::resizeEvent(QResizeEvent* event) {
    _isDirty = true;
    QWidget::resizeEvent(event);
}

/// Where the line of sight meets the height of the radar.
QUORPoint3D QUORSceneView::groundAt(const QPointF& position) const {
    const double ratio = devicePixelRatioF();
    const QSize size = fullSize();
    _window->SetSize(size.width(), size.height());
    vtkRenderer* renderer = _renderer->getMainRenderer();
    std::array<QUORPoint3D, 2> ends;
    for (int i = 0; i < 2; ++i) {
        renderer->SetDisplayPoint(position.x() * ratio, size.height() - 1 - position.y() * ratio, i);
        renderer->DisplayToWorld();
        const double* world = renderer->GetWorldPoint();
        ends[i] = toPoint(world) * (1.0 / world[3]);
    }
    const QUORPoint3D ray = ends[1] - ends[0];
    const double share = ray.z != 0.0 ? (_groundHeight - ends[0].z) / ray.z : 1.0;
    return ends[0] + ray * std::clamp(share, 0.0, 1.0);
}

std::optional<QPointF> QUORSceneView::screenAt(const QUORPoint3D& place) const {
    vtkRenderer* renderer = _renderer->getMainRenderer();
    renderer->SetWorldPoint(place.x, place.y, _groundHeight, 1.0);
    renderer->WorldToView();
    const double* seen = renderer->GetViewPoint();
    if (!(std::abs(seen[2]) <= 1.0)) {
        return std::nullopt; // behind the camera
    }
    return QPointF(0.5 * (1.0 + seen[0]) * width(), 0.5 * (1.0 - seen[1]) * height());
}

// Drawing

QSize QUORSceneView::fullSize() const {
    return (QSizeF(size()) * devicePixelRatioF()).toSize().expandedTo(QSize(8, 8));
}

QImage QUORSceneView::render(const QSize& size) {
    _isDrawing = true;
    _window->SetSize(size.width(), size.height());
    _interactor->SetSize(size.width(), size.height());
    _interactor->EnableRenderOn();
    _renderer->render();
    _interactor->EnableRenderOff();
    _isDrawing = false;
    vtkNew<vtkUnsignedCharArray> pixels;
    _window->GetPixelData(0, 0, size.width() - 1, size.height() - 1, 0, pixels.Get(), 0);
    const QImage image(pixels->GetPointer(0), size.width(), size.height(), 3 * size.width(),
                       QImage::Format_RGB888);
    return image.mirrored();
}

void QUORSceneView::draw(bool moving) {
    QElapsedTimer watch;
    watch.start();
    const QSize full = fullSize();
    const double share = moving ? SHARES[_reduction] : 1.0;
    _renderer->setMoving(moving);
    _image = render((QSizeF(full) * share).toSize().expandedTo(QSize(8, 8)));
    _isDirty = false;
    const double milliseconds = double(watch.nsecsElapsed()) / 1e6;
    if (moving) {
        adaptReduction(milliseconds);
    }
    Q_EMIT drawn(milliseconds, moving);
}

void QUORSceneView::adaptReduction(double milliseconds) {
    if (milliseconds > MOST_MS && _reduction + 1 < int(SHARES.size())) {
        ++_reduction;
    } else if (milliseconds < LITTLE_MS && _reduction > 0) {
        --_reduction;
    }
}

void QUORSceneView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (isReady() && _scene.isComplete() && _isDirty) {
        draw(_isMoving);
    }
    if (_image.isNull()) {
        painter.fillRect(rect(), QColor(38, 64, 77));
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(rect(), _image);
    paintLine(painter);
}

// On the ground, wherever the camera goes.
void QUORSceneView::paintLine(QPainter& painter) const {
    QPointF from = _lineFrom;
    QPointF to = _lineTo;
    if (_line) {
        const auto first = screenAt(_line->first);
        const auto second = screenAt(_line->second);
        if (!first || !second) {
            return;
        }
        from = *first;
        to = *second;
    } else if (!_isDraggingLine) {
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto& [color, width] : {std::pair{Qt::black, 4.0}, std::pair{Qt::yellow, 2.0}}) {
        painter.setPen(QPen(color, width));
        painter.drawLine(from, to);
    }
}

QImage QUORSceneView::getPicture() {
    return drawPicture(fullSize());
}

QImage QUORSceneView::drawPicture(const QSize& size) {
    if (!isReady() || !_scene.isComplete()) {
        return {};
    }
    _renderer->setMoving(false);
    const QImage image = render(size);
    _isDirty = true;
    update();
    return image;
}
