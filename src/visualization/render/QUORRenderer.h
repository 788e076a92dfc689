// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureArea.h"
#include "QUORStyleGroup.h"
#include "QUORVisualizationPipelineItem.h"

#include <vtkSmartPointer.h>

#include <QObject>
#include <QStringList>

#include <array>
#include <memory>
#include <vector>

class QUORCameraInteractor;
class QUORCameraInteractorObserver;
class QUORCompassRepresentation;
class QUORCoarseTerrain;
class QUORDataFrame;
class QUORColormap;
class QUORGeneralSettings;
class QUORLabelLayout;
class QUORLegendBox;
class QUORLegendDetails;
class QUORPointWidget;
class QUORPointWidgetObserver;
class QUORSceneParts;
class QUORStaticSnapshot;
class vtkActor;
class vtkCompassWidget;
class vtkLight;
class vtkRenderWindow;
class vtkRenderer;
class vtkScalarBarActor;
class vtkSphereSource;

/// The VTK scene of one render window: the main renderer with the props of a finished visualization, the
/// site marker, the compass and the legend, and a small renderer with the colour bar. It owns the camera
/// interactor and takes its colours from the styles file.
///
/// One renderer lives as long as its window: what a new visualization shares with the last one keeps its
/// graphics buffers. Terrain has a renderer of its own under the main one, whose picture is kept while it
/// does not change. Each drawing of the window is fitted to the scene, whoever asks for it.
///
/// Belongs to the thread that owns the window, and so does the death of everything that it was given to
/// draw.
class QUORRenderer : public QObject {
    Q_OBJECT

public:
    /// The window, with its interactor, and the observers must outlive the renderer; the observers may be
    /// null. `withoutInteraction`: no point widget and no wiring of mouse and keyboard.
    QUORRenderer(vtkRenderWindow* window, QUORCameraInteractorObserver* cameraObserver,
                 QUORPointWidgetObserver* pointObserver, bool withoutInteraction);
    ~QUORRenderer() override;

    /// For the next picture in the same window: the camera where a new renderer has it, and the styles
    /// file read again.
    void restart();

    /// Reads the RENDERER group of the styles file into the style values.
    void loadStyle(bool night);
    /// Loads the style for day or night and applies it.
    void updateLights();
    void setNight(bool night) { _night = night; }

    /// Legend lines and colour bar of the frame, which must have 3D data; `with2d`: its 2D product is shown.
    void setInfoData(const std::shared_ptr<const QUORDataFrame>& frame,
                     const std::shared_ptr<const QUORGeneralSettings>& settings, bool with2d = true);
    /// Shows a finished item: it must have results.
    void setVisualization(const QUORVisualizationPipelineItem::Ptr& item);
    /// Shows nothing of the visualization any more and gives back the graphics buffers of its products;
    /// terrain and what else the next picture probably shows again keeps its own.
    void removeVisualization();

    /// These take effect at the next `setVisualization`.
    void toggleCompass(bool on);
    void toggleColorScale(bool on);
    void toggleLegend(bool on);
    void togglePointWidget(bool on, bool force);

    /// Where colour bar, compass and legend lie over the scene, as far as they are switched on.
    std::vector<QUORPictureArea> getTakenAreas() const;

    /// While the view moves, terrain is drawn coarser. Ends with the next `setVisualization`.
    void setMoving(bool moving);

    void resetCamera();
    /// Draws once.
    void render();
    /// Draws through the interactor and once more through the window.
    void renderWindow();

    QUORCameraInteractor* getCameraInteractor() const;
    vtkRenderer* getMainRenderer() const;
    vtkRenderer* getColorScaleRenderer() const;
    vtkActor* getSiteMarker() const;
    QStringList getLegendLines() const { return _legendLines; }
    QUORCompassRepresentation* getCompass() const;
    QUORPointWidget* getPointWidget() const;

private:
    void createRenderers();
    void createCamera();
    void createCompass();
    void createInteractions();
    void createLights();
    void createSiteMarker();
    void resetModel();
    void placeSiteMarker();
    void setShown(vtkProp* prop, bool shown);
    void makeLegendDetails(const QUORDataFrame& frame, const QUORGeneralSettings& settings,
                           const QUORColormap& colormap, bool with2d);
    void updateColorBar(const QUORDataFrame& frame, const QUORColormap& colormap);
    void updateSceneHeights(const QUORDataFrame& frame, double verticalScale);
    void observeDrawing(unsigned long event, void (QUORRenderer::*handler)());
    void onDrawingStarts();
    void onDrawingEnds();

    vtkRenderWindow* _window;
    QUORCameraInteractorObserver* _cameraObserver;
    QUORPointWidgetObserver* _pointObserver;
    bool _withoutInteraction;
    vtkSmartPointer<vtkRenderer> _mainRenderer;
    vtkSmartPointer<QUORCameraInteractor> _cameraInteractor;
    QUORVisualizationPipelineItem::Ptr _currentVisualization;
    bool _night = false;
    bool _compassOn = true;
    bool _colorBarOn = true;
    bool _legendOn = true;
    vtkSmartPointer<vtkCompassWidget> _compassWidget;
    vtkSmartPointer<QUORCompassRepresentation> _compass;
    vtkSmartPointer<QUORPointWidget> _pointWidget;
    bool _pointWidgetOn = false;
    QStringList _legendLines;
    vtkSmartPointer<QUORLegendBox> _legend;
    std::unique_ptr<QUORLegendDetails> _legendDetails;
    std::unique_ptr<QUORLabelLayout> _labels;
    vtkSmartPointer<vtkRenderer> _colorScaleRenderer;
    vtkSmartPointer<vtkScalarBarActor> _colorBar;
    /// What the bar was made of.
    QStringList _colorBarKey;
    vtkSmartPointer<vtkSphereSource> _siteSphere;
    vtkSmartPointer<vtkActor> _siteMarker;
    QUORStyleGroup _style;

    vtkSmartPointer<vtkRenderer> _terrainRenderer;
    std::unique_ptr<QUORSceneParts> _parts;
    std::unique_ptr<QUORCoarseTerrain> _coarseTerrain;
    std::unique_ptr<QUORStaticSnapshot> _snapshot;
    std::vector<unsigned long> _drawingObservers;
    /// The camera's near and far plane outside a drawing, and whether the drawing copies a kept picture.
    std::array<double, 2> _statedRange{};
    bool _isCopying = false;
    /// Heights between which everything of the scene lies, in scene units.
    double _lowestHeight;
    double _greatestHeight;
};
