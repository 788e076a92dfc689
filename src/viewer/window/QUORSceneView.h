// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCameraHistory.h"
#include "QUORCameraInteractorObserver.h"
#include "QUORDisplayState.h"
#include "QUORGeneralSettings.h"
#include "QUORPointWidgetObserver.h"
#include "QUORSceneOpacity.h"
#include "QUORViewerScene.h"

#include <QImage>
#include <QTimer>
#include <QWidget>

#include <vtkSmartPointer.h>

#include <memory>
#include <optional>
#include <utility>

class QPainter;
class QUORRenderer;
class vtkGenericRenderWindowInteractor;
class vtkOpenGLRenderWindow;

/// The surface on which a scene is seen and turned. The scene is drawn in a window of our own without a
/// display, read back and painted, so that it works over remote desktops too. While the view moves, pictures
/// are as much smaller as a short frame needs; a moment after the last movement the full one follows.
///
/// Belongs to the main thread.
class QUORSceneView : public QWidget, private QUORCameraInteractorObserver, private QUORPointWidgetObserver {
    Q_OBJECT

public:
    using View = QUORViewGeometry::View;

    explicit QUORSceneView(QWidget* parent = nullptr);
    ~QUORSceneView() override;

    /// Whether anything can be drawn here; the reason why not.
    bool isReady() const { return _window != nullptr; }
    QString getError() const { return _error; }
    bool isHardware() const { return _hardware; }

    /// The first scene is fitted into the picture.
    void showScene(const QUORViewerScene& scene, const QUORGeneralSettings::CPtr& settings,
                   const QUORDisplayState& state);
    void applyOpacity(const QUORDisplayState& state);

    View getView() const;
    void setView(const View& view);
    /// Degrees, as `QUORViewPlan`; from as near as shows all of the product.
    void lookFrom(double heading, double pitch);
    /// From the present side.
    void fit();
    bool canUndo() const { return _history.canUndo(); }
    bool canRedo() const { return _history.canRedo(); }
    void undo();
    void redo();

    void setNight(bool night);
    bool isNight() const { return _night; }
    /// Shows the cross-hair.
    void setReading(bool on);
    /// Moves the point of the cross-hair to the grid point so many steps away: east, north, up.
    void movePoint(int x, int y, int z);
    /// A section from where the point is to where it is when the line is ended.
    void beginLine();
    void endLine();
    /// The left button draws a line over the ground instead of turning the view.
    void setDrawingLine(bool on);

    /// The picture as it is shown, in full quality.
    QImage getPicture();
    /// Draws a picture of that size, as the service would.
    QImage drawPicture(const QSize& size);

    QSize sizeHint() const override { return {1200, 900}; }
    QSize minimumSizeHint() const override { return {160, 120}; }

Q_SIGNALS:
    void viewChanged();
    /// Scene metres at a vertical scale of 1.
    void placeChosen(const QUORPoint3D& place);
    void lineDrawn(const QUORPoint3D& from, const QUORPoint3D& to);
    /// A picture was drawn, in milliseconds.
    void drawn(double milliseconds, bool moving);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void cameraMoved(QUORCameraInteractor* camera) override;
    void cameraReset(QUORCameraInteractor* camera) override;
    void pointMoved(QUORPointWidget* widget, const QUORPoint3D& point) override;

    void createWindow();
    void setScenePlace();
    void onRenderAsked();
    void noteMovement();
    void settle();
    void rememberView();
    void applyView(const View& view);
    void send(unsigned long event, const QPointF& position, Qt::KeyboardModifiers modifiers);
    bool sendKey(unsigned long event, const QKeyEvent& key);
    int compassState() const;
    QSize fullSize() const;
    void draw(bool moving);
    QImage render(const QSize& size);
    void adaptReduction(double milliseconds);
    QUORPoint3D groundAt(const QPointF& position) const;
    std::optional<QPointF> screenAt(const QUORPoint3D& place) const;
    void showLine(const QUORPoint3D& from, const QUORPoint3D& to);
    void paintLine(QPainter& painter) const;
    bool moveByKey(const QKeyEvent& key);

    QString _error;
    vtkSmartPointer<vtkOpenGLRenderWindow> _window;
    vtkSmartPointer<vtkGenericRenderWindowInteractor> _interactor;
    std::unique_ptr<QUORRenderer> _renderer;
    bool _hardware = false;
    QUORViewerScene _scene;
    QUORSceneOpacity _opacity;
    double _verticalScale = 1.0;
    double _groundHeight = 0.0; ///< scene metres
    QImage _image;
    bool _isDirty = false;
    bool _isDrawing = false;
    bool _isMoving = false;
    bool _renderAsked = false;
    int _wheel = 0;     ///< what has not made a whole step yet
    int _reduction = 2; ///< index of the picture's share while moving
    QTimer _settling;
    QUORCameraHistory _history;
    bool _isReading = false;
    bool _hasPoint = false; ///< the cross-hair has a place
    bool _night = false;
    bool _isDrawingLine = false;
    bool _isDraggingLine = false;
    QPointF _lineFrom; ///< while it is dragged
    QPointF _lineTo;
    std::optional<std::pair<QUORPoint3D, QUORPoint3D>> _line; ///< over the ground, scene metres
};
