// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBackgroundSettings.h"
#include "QUORDisplayState.h"
#include "QUORGeneralSettings.h"
#include "QUORPictureOrder.h"
#include "QUORStopwatch.h"
#include "QUORViewAngle.h"
#include "QUORViewGeometry.h"
#include "QUORVisualizationObserver.h"

#include <QString>

#include <vtkSmartPointer.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

class QUORDataFrame;
class QUORRenderer;
class QUORVisualization;
class vtkGenericRenderWindowInteractor;
class vtkImageData;
class vtkImageWriter;
class vtkOpenGLRenderWindow;

/// Turns one data frame into one image file without any window on screen. A job on another thread calls
/// `initVisualization`, `canVisualize` and, only if that allows it, `startVisualization` and
/// `waitUntilReady`; the scene is built by the controller's pipeline, and the image is rendered and written
/// on the main thread, where the controller calls back.
///
/// Made and destroyed on the main thread, which also owns the one window and the one renderer of the
/// process. The settings of a job are replaced by its `initVisualization` only, while no scene is being
/// built; the gate orders the two threads.
class QUOROffscreenVisualizer : public QUORVisualizationObserver {
public:
    using Ptr = std::shared_ptr<QUOROffscreenVisualizer>;
    using CPtr = std::shared_ptr<const QUOROffscreenVisualizer>;

    /// Opens the window. Where no OpenGL is usable that is said now and again on every image, and the process
    /// goes on; an X display that was named is tried again with every image.
    QUOROffscreenVisualizer();
    ~QUOROffscreenVisualizer() override;
    QUOROffscreenVisualizer(const QUOROffscreenVisualizer&) = delete;
    QUOROffscreenVisualizer& operator=(const QUOROffscreenVisualizer&) = delete;

    /// Takes copies of the settings of the next job, reads the presets and applies its display-state preset.
    void initVisualization(const QUORGeneralSettings& general, const QUORBackgroundSettings& background);
    /// Whether the frame has the 2D data that the display state shows or the caller requires.
    bool canVisualize(const std::shared_ptr<QUORDataFrame>& frame, bool require2d) const;
    /// Closes the gate and has the scene of the frame built; the image that the background settings describe
    /// goes to `outputFile`, an absolute path.
    void startVisualization(const std::shared_ptr<QUORDataFrame>& frame, const QString& outputFile);
    /// The same for several pictures of one scene, in that order.
    void startVisualization(const std::shared_ptr<QUORDataFrame>& frame,
                            std::vector<QUORPictureOrder> orders);
    enum Result {
        Written,    ///< all pictures
        NotWritten, ///< the output did not take every picture
        NotDrawn    ///< there was nothing worth writing
    };
    /// Returns when the pictures are on disk, or the reasons why they are not are in the log. The main thread
    /// must be delivering events meanwhile.
    Result waitUntilReady();
    /// What became of the orders of the last start, for the thread that has waited for them.
    const std::vector<QUORPictureOrder>& getOrders() const { return _orders; }

    /// Renders and writes the image; opens the gate on every way out.
    void visualizationFinished(QUORVisualization* visualization) override;
    QUORGeneralSettings::CPtr getVisualizationGeneralSettings() override;
    QUORDisplayState::CPtr getVisualizationDisplayState() override;

    void applyPresetDisplayState();
    void applyPresetViewAngle(const QUORViewAngle::Ptr& viewAngle);
    void applyPresetViewAngle(const QUORViewAngle::Ptr& viewAngle, const QString& preset);
    /// TIFF for 0, JPEG for 2, PNG for every other value.
    static vtkSmartPointer<vtkImageWriter> createWriter(int outputFormat);

private:
    void closeGate();
    void openGate();
    bool provideWindow(QString& error);
    void renderImage(QUORVisualization& visualization);
    /// The camera that looks so and has the whole product of the frame in the picture.
    QUORViewGeometry::View findFit(double heading, double pitch) const;
    bool lacks3DData(const QUORVisualization& visualization) const;
    void prepareWindow(const QUORPictureOrder& order);
    void prepareRenderer(QUORVisualization& visualization);
    void placeCamera(const QUORPictureOrder& order);
    void drawPicture(QUORVisualization& visualization, const QUORPictureOrder& order);
    void readPixels(vtkImageData* picture);
    void logFailure(const QString& reason);

    std::mutex _gateMutex;
    std::condition_variable _gateOpened;
    /// Closed by the job's thread, opened by the main thread; guarded by the mutex.
    bool _gateOpen = true;
    std::shared_ptr<QUORVisualization> _visualization;
    QUORGeneralSettings::Ptr _generalSettings;
    QUORBackgroundSettings::Ptr _backgroundSettings;
    QUORDisplayState::Ptr _displayState;
    /// Belongs to the main thread while the gate is closed.
    std::vector<QUORPictureOrder> _orders;
    bool _rendered = false;
    QUORStopwatch _sceneWatch;

    vtkSmartPointer<vtkOpenGLRenderWindow> _window;
    vtkSmartPointer<vtkGenericRenderWindowInteractor> _interactor;
    std::unique_ptr<QUORRenderer> _renderer;
    /// Keeps its memory from one picture to the next.
    vtkSmartPointer<vtkImageData> _picture;
    bool _hardware = false;
    QString _windowDescription;
};
