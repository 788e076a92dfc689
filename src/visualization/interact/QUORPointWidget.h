// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"
#include "QUORStyleGroup.h"

#include <QString>

#include <vtkPointWidget.h>
#include <vtkSmartPointer.h>

#include <array>

class QUORPointWidgetCallback;
class QUORPointWidgetObserver;
class vtkActor;
class vtkCaptionActor2D;
class vtkPolyData;
class vtkPolyDataMapper;
class vtkPropAssembly;
class vtkSphereSource;

/// The cursor tool of an interactive view: a cross-hair that the left button drags through the data
/// volume, a marker at the chosen point, and a marker with a caption at a home position. Main thread only.
class QUORPointWidget : public vtkPointWidget {
public:
    using Color = std::array<int, 3>;

    static QUORPointWidget* New();

    /// Makes the parts. Called once, right after New(); the observer may be null and must outlive the
    /// widget.
    void init(QUORPointWidgetObserver* observer);
    /// Ends what `init` began: the widget tells nobody any more and has no parts.
    void destroy();
    void loadStyle(bool night);

    /// Takes the point from the cross-hair, refreshes markers and caption and tells the observer.
    void update();
    /// xmin, xmax, ymin, ymax, zmin, zmax of the volume that the cross-hair spans; the point keeps its
    /// relative height. Six zeros put it at the origin.
    void setBounds(const double* bounds);
    /// Marker colours to their starting state, the point marker to the centre of the bounds.
    void resetActors();
    void SetEnabled(int enabling) override;

    /// These four show at the next update.
    void setHomePosition(const QUORPoint3D& home) { _homePosition = home; }
    void setHomeLabel(const QString& label) { _homeLabel = label; }
    /// Components 0 to 255.
    void setPointColor(const Color& color) { _pointColor = color; }
    /// Applied to the height of the home position.
    void setVerticalScale(double scale) { _verticalScale = scale; }

    const QUORPoint3D& getPoint() const { return _point; }
    /// Cross-hair, point marker, home marker and home caption; null before `init`.
    vtkPropAssembly* getParts() const;

    QUORPointWidget(const QUORPointWidget&) = delete;
    QUORPointWidget& operator=(const QUORPointWidget&) = delete;
    vtkTypeMacro(QUORPointWidget, vtkPointWidget)

protected:
    QUORPointWidget();
    ~QUORPointWidget() override;

    void OnMiddleButtonDown() override {}
    void OnMiddleButtonUp() override {}
    void OnRightButtonDown() override {}
    void OnRightButtonUp() override {}

private:
    void makeMarkers();
    void makeCaption();
    void dressCursor();
    void showPointColor();
    void placePointMarker(const QUORPoint3D& position);
    void placeHome();

    QUORPointWidgetObserver* _observer = nullptr;
    vtkSmartPointer<vtkPropAssembly> _parts;
    vtkSmartPointer<vtkActor> _pointMarker;
    vtkSmartPointer<vtkActor> _homeMarker;
    vtkSmartPointer<vtkCaptionActor2D> _homeCaption;
    vtkSmartPointer<vtkSphereSource> _sphere;
    vtkSmartPointer<vtkPolyDataMapper> _mapper;
    vtkSmartPointer<vtkPolyData> _pointData;
    QUORPointWidgetCallback* _callback = nullptr;
    QUORPoint3D _point;
    QUORPoint3D _homePosition;
    QString _homeLabel;
    Color _pointColor{255, 255, 255};
    std::array<double, 6> _bounds{};
    double _verticalScale = 1.0;
    QUORStyleGroup _style;
};
