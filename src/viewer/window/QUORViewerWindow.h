// SPDX-License-Identifier: MIT
#pragma once

#include "QUORServicePicture.h"
#include "QUORTimeList.h"
#include "QUORViewerPresets.h"
#include "QUORViewerSession.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>

class QAction;
class QDockWidget;
class QLabel;
class QProgressBar;
class QSlider;
class QToolButton;
class QUORLayersPanel;
class QUORPresetsPanel;
class QUORReadingPanel;
class QUORSceneView;
class QUORSurfacesPanel;
class QUORTimePanel;
class QUORViewerExport;

/// The viewer: a scene with panels around it. It reads product directories and never writes there.
class QUORViewerWindow : public QMainWindow {
    Q_OBJECT

public:
    /// In place of what the settings say, where not empty.
    struct Folders {
        QString flat; ///< of the 2D products
        QString terrain;
    };

    explicit QUORViewerWindow(Folders folders = {}, QWidget* parent = nullptr);
    ~QUORViewerWindow() override;

    /// A product file or a directory of them; what is wrong with it is said in the window.
    void open(const QString& path);
    /// The directory of the settings.
    void openConfigured();

    QUORSceneView& getView() { return *_view; }
    QUORViewerSession& getSession() { return *_session; }
    QUORTimeList& getTimes() { return *_times; }
    QUORViewerExport& getExport() { return *_export; }
    /// What the window has said last, and says until something else happens.
    QString getMessage() const;

    void savePreset(const QString& name);
    void showPreset(const QString& name);
    void setHeightFactor(double factor);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createPanels();
    QDockWidget* addPanel(const QString& title, QWidget* panel, Qt::DockWidgetArea area);
    void createActions();
    void createFileActions();
    void createViewActions();
    void createShowActions();
    QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                       const std::function<void()>& action, bool inToolBar = false);
    QWidget* createHeightSlider();
    void connectModel();
    void openFolders(const QString& folder);
    QString findFlatFolder(const QString& folder) const;
    void onCurrentChanged();
    void onSceneChanged();
    void onBusyChanged(bool busy);
    void report(const QString& message);
    void dismiss();
    void finishPresetChange(QUORViewerPresets::Result result, const QString& name);
    void askServicePicture(const QString& preset);
    void showServicePicture(const QImage& image);
    QStringList toolOptions() const;
    QString askTarget(const QString& title, const QString& kinds);
    void exportPicture();
    void exportTimes();
    void exportFlight();
    void cancel();
    void updateUndo();

    Folders _folders;
    std::unique_ptr<QUORTimeList> _times;
    std::unique_ptr<QUORViewerSession> _session;
    QUORServicePicture _service;
    std::unique_ptr<QUORViewerExport> _export;
    QUORSceneView* _view;
    QLabel* _message;
    QWidget* _messageBar;
    QLabel* _status;
    QProgressBar* _progress;
    QToolButton* _cancel;
    QToolBar* _toolBar;
    QSlider* _height;
    QLabel* _heightText;
    QTimer _heightDelay;
    QUORLayersPanel* _layers;
    QUORSurfacesPanel* _surfaces;
    QUORTimePanel* _timePanel;
    QUORReadingPanel* _reading;
    QUORPresetsPanel* _presets;
    QAction* _undo = nullptr;
    QAction* _redo = nullptr;
    QAction* _read = nullptr;
    QAction* _line = nullptr;
};
