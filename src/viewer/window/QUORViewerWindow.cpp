// SPDX-License-Identifier: MIT
#include "QUORViewerWindow.h"

#include "QUORLayersPanel.h"
#include "QUORPresetsPanel.h"
#include "QUORReadingPanel.h"
#include "QUORSceneView.h"
#include "QUORSurfacesPanel.h"
#include "QUORSystem.h"
#include "QUORTimePanel.h"
#include "QUORViewerExport.h"
#include "QUORWindowMemory.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

const QString TERRAIN_CACHE = QStringLiteral("~/.quor3d/cache/terrain");
/// The slider's steps: tenths of the factor.
constexpr double HEIGHT_STEPS = 10.0;
constexpr int LEAST_HEIGHT = 10;
constexpr int MOST_HEIGHT = 200;
constexpr int HEIGHT_DELAY_MS = 120;
/// Times of a loop, unless another number is asked for.
constexpr int USUAL_LOOP = 24;
constexpr const char* MOVING_KINDS =
    QT_TRANSLATE_NOOP("QUORViewerWindow", "Moving pictures (*.webp *.mp4 *.gif)");

QString readable(const QFileInfo& info) {
    return QDir::toNativeSeparators(info.absoluteFilePath());
}

/// Why a file is no product to show; empty when it is one.
QString findFault(const QFileInfo& info) {
    const QUORFile file(info.absoluteFilePath());
    switch (file.getStatus()) {
    case QUORFile::Valid:
        break;
    case QUORFile::Incomplete:
    case QUORFile::NoData:
        return QUORViewerWindow::tr("%1 is not complete: it may still be on its way.").arg(readable(info));
    case QUORFile::Invalid:
        return QUORViewerWindow::tr(
                   "%1 is no product file. Data in open formats become products with “quor3d import”.")
            .arg(readable(info));
    default:
        return QUORViewerWindow::tr("%1 cannot be read.").arg(readable(info));
    }
    if (file.getProduct() != QStringLiteral("CAPPI")) {
        return QUORViewerWindow::tr("%1 is a 2D product (%2); open a volume, which shows it beneath.")
            .arg(readable(info), file.getProduct());
    }
    return {};
}

} // namespace

QUORViewerWindow::QUORViewerWindow(Folders folders, QWidget* parent)
    : QMainWindow(parent),
      _folders(std::move(folders)),
      _times(std::make_unique<QUORTimeList>()),
      _session(std::make_unique<QUORViewerSession>(_times->getStore())),
      _view(new QUORSceneView),
      _message(new QLabel),
      _messageBar(new QWidget),
      _status(new QLabel),
      _progress(new QProgressBar),
      _cancel(new QToolButton),
      _toolBar(new QToolBar(tr("Tools"))),
      _layers(new QUORLayersPanel),
      _surfaces(new QUORSurfacesPanel),
      _timePanel(new QUORTimePanel(*_times)),
      _reading(new QUORReadingPanel),
      _presets(new QUORPresetsPanel) {
    setWindowTitle(tr("Radar volumes"));
    _session->setHardware(_view->isHardware());
    _toolBar->setObjectName(QStringLiteral("tools"));
    addToolBar(_toolBar);
    createPanels();
    createActions();
    connectModel();
    resize(1500, 1000);
    QUORWindowMemory::restore(*this);
    if (!_view->isReady()) {
        report(tr("Nothing can be drawn here, OpenGL is not usable: %1").arg(_view->getError()));
    }
    _view->setFocus();
}

QUORViewerWindow::~QUORViewerWindow() {
    // What was drawn dies before the window that it was drawn in.
    _session->disconnect();
    _times->disconnect();
    _export.reset();
    delete takeCentralWidget();
    _session.reset();
}

void QUORViewerWindow::createPanels() {
    _message->setObjectName(QStringLiteral("message"));
    _message->setWordWrap(true);
    _message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* dismissal = new QToolButton;
    dismissal->setText(tr("Close"));
    connect(dismissal, &QToolButton::clicked, this, &QUORViewerWindow::dismiss);
    auto* bar = new QHBoxLayout(_messageBar);
    bar->setContentsMargins(8, 4, 8, 4);
    bar->addWidget(_message, 1);
    bar->addWidget(dismissal);
    _messageBar->setStyleSheet(QStringLiteral("background: #ffe7a3; color: black"));
    _messageBar->hide();
    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_messageBar);
    layout->addWidget(_view, 1);
    setCentralWidget(central);

    _progress->setRange(0, 0);
    _progress->setMaximumWidth(140);
    _progress->hide();
    _cancel->setText(tr("Cancel"));
    _cancel->setObjectName(QStringLiteral("cancel"));
    _cancel->hide();
    statusBar()->addWidget(_status, 1);
    statusBar()->addPermanentWidget(_progress);
    statusBar()->addPermanentWidget(_cancel);

    QDockWidget* const times = addPanel(tr("Times"), _timePanel, Qt::LeftDockWidgetArea);
    QDockWidget* const presets = addPanel(tr("Presets"), _presets, Qt::LeftDockWidgetArea);
    addPanel(tr("Layers"), _layers, Qt::RightDockWidgetArea);
    addPanel(tr("3D product"), _surfaces, Qt::RightDockWidgetArea);
    addPanel(tr("Reading"), _reading, Qt::RightDockWidgetArea);
    splitDockWidget(times, presets, Qt::Vertical);
    _presets->refresh();
}

QDockWidget* QUORViewerWindow::addPanel(const QString& title, QWidget* panel, Qt::DockWidgetArea area) {
    auto* dock = new QDockWidget(title);
    dock->setObjectName(panel->objectName() + QStringLiteral("Dock"));
    dock->setWidget(panel);
    addDockWidget(area, dock);
    return dock;
}

void QUORViewerWindow::createActions() {
    createFileActions();
    createViewActions();
    createShowActions();
    _toolBar->addWidget(createHeightSlider());
}

QAction* QUORViewerWindow::addAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                                     const std::function<void()>& action, bool inToolBar) {
    QAction* const item = menu->addAction(text);
    item->setShortcut(keys);
    connect(item, &QAction::triggered, this, action);
    if (inToolBar) {
        _toolBar->addAction(item);
        item->setToolTip(keys.isEmpty()
                             ? item->iconText()
                             : item->iconText() + QStringLiteral(" (") + keys.toString() + QLatin1Char(')'));
    }
    return item;
}

void QUORViewerWindow::createFileActions() {
    QMenu* const menu = menuBar()->addMenu(tr("&File"));
    addAction(menu, tr("&Open a product…"), QKeySequence::Open, [this] {
        const QString path =
            QFileDialog::getOpenFileName(this, tr("Open a product"), _times->getStore()->getPath3d());
        if (!path.isEmpty()) {
            open(path);
        }
    });
    addAction(menu, tr("Open a &directory…"), QKeySequence(tr("Ctrl+Shift+O")), [this] {
        const QString path =
            QFileDialog::getExistingDirectory(this, tr("Open a directory"), _times->getStore()->getPath3d());
        if (!path.isEmpty()) {
            open(path);
        }
    });
    menu->addSeparator();
    addAction(menu, tr("Save the &picture…"), QKeySequence(tr("Ctrl+E")), [this] { exportPicture(); });
    addAction(menu, tr("Save the times as a &loop…"), QKeySequence(tr("Ctrl+Shift+E")),
              [this] { exportTimes(); });
    addAction(menu, tr("Save a &flight round the scene…"), QKeySequence(tr("Ctrl+Shift+F")),
              [this] { exportFlight(); });
    menu->addSeparator();
    addAction(menu, tr("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void QUORViewerWindow::createViewActions() {
    struct Usual {
        QString text;
        QString keys;
        double heading;
        double pitch;
    };
    const QList<Usual> views{{tr("From &above"), tr("Ctrl+1"), 0.0, 90.0},
                             {tr("From the &south"), tr("Ctrl+2"), 0.0, 25.0},
                             {tr("From the &west"), tr("Ctrl+3"), 90.0, 25.0},
                             {tr("From the &north"), tr("Ctrl+4"), 180.0, 25.0},
                             {tr("From the &east"), tr("Ctrl+5"), 270.0, 25.0}};
    QMenu* const menu = menuBar()->addMenu(tr("&View"));
    for (const Usual& view : views) {
        addAction(
            menu, view.text, QKeySequence(view.keys),
            [this, heading = view.heading, pitch = view.pitch] { _view->lookFrom(heading, pitch); }, true);
    }
    addAction(
        menu, tr("&Fit"), QKeySequence(tr("Ctrl+0")), [this] { _view->fit(); }, true);
    menu->addSeparator();
    _undo = addAction(
        menu, tr("&Undo the movement"), QKeySequence::Undo, [this] { _view->undo(); }, true);
    _redo = addAction(
        menu, tr("&Redo the movement"), QKeySequence::Redo, [this] { _view->redo(); }, true);
    _toolBar->addSeparator();
    updateUndo();
}

void QUORViewerWindow::createShowActions() {
    QMenu* const menu = menuBar()->addMenu(tr("&Tools"));
    QAction* const night = addAction(
        menu, tr("&Night"), QKeySequence(tr("Ctrl+N")), [] {}, true);
    night->setCheckable(true);
    connect(night, &QAction::toggled, _view, &QUORSceneView::setNight);
    _read = addAction(
        menu, tr("Read &values"), QKeySequence(tr("Ctrl+V")), [] {}, true);
    _read->setCheckable(true);
    connect(_read, &QAction::toggled, _view, &QUORSceneView::setReading);
    _line = addAction(
        menu, tr("Draw a &section"), QKeySequence(tr("Ctrl+L")), [] {}, true);
    _line->setCheckable(true);
    connect(_line, &QAction::toggled, _view, &QUORSceneView::setDrawingLine);
    addAction(menu, tr("Section &from the point"), QKeySequence(tr("Alt+Home")),
              [this] { _view->beginLine(); });
    addAction(menu, tr("Section &to the point"), QKeySequence(tr("Alt+End")), [this] { _view->endLine(); });
    menu->addSeparator();
    addAction(menu, tr("&Play"), QKeySequence(tr("Ctrl+Space")),
              [this] { _timePanel->setPlaying(!_timePanel->isPlaying()); });
    addAction(menu, tr("&Back in time"), QKeySequence(tr("Ctrl+PgUp")), [this] { _times->step(-1); });
    addAction(menu, tr("&On in time"), QKeySequence(tr("Ctrl+PgDown")), [this] { _times->step(1); });
    addAction(menu, tr("&Cancel"), QKeySequence(tr("Esc")), [this] { cancel(); });
    QMenu* const panels = menuBar()->addMenu(tr("&Panels"));
    for (QDockWidget* dock : findChildren<QDockWidget*>()) {
        panels->addAction(dock->toggleViewAction());
    }
}

QWidget* QUORViewerWindow::createHeightSlider() {
    auto* box = new QWidget;
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(6, 0, 6, 0);
    _height = new QSlider(Qt::Horizontal);
    _height->setObjectName(QStringLiteral("heightFactor"));
    _height->setAccessibleName(tr("Height factor"));
    _height->setRange(LEAST_HEIGHT, MOST_HEIGHT);
    _height->setMaximumWidth(160);
    _height->setValue(int(std::lround(_session->getGeneralSettings()->getVerticalScale() * HEIGHT_STEPS)));
    _heightText = new QLabel;
    layout->addWidget(new QLabel(tr("Heights")));
    layout->addWidget(_height);
    layout->addWidget(_heightText);
    const auto say = [this](int value) {
        _heightText->setText(tr("× %1").arg(value / HEIGHT_STEPS, 0, 'f', 1));
    };
    say(_height->value());
    _heightDelay.setSingleShot(true);
    _heightDelay.setInterval(HEIGHT_DELAY_MS);
    connect(_height, &QSlider::valueChanged, this, [this, say](int value) {
        say(value);
        _heightDelay.start();
    });
    connect(&_heightDelay, &QTimer::timeout, this,
            [this] { _session->setVerticalScale(_height->value() / HEIGHT_STEPS); });
    return box;
}

void QUORViewerWindow::connectModel() {
    connect(_times.get(), &QUORTimeList::currentChanged, this, &QUORViewerWindow::onCurrentChanged);
    connect(_session.get(), &QUORViewerSession::sceneChanged, this, &QUORViewerWindow::onSceneChanged);
    connect(_session.get(), &QUORViewerSession::busyChanged, this, &QUORViewerWindow::onBusyChanged);
    connect(_session.get(), &QUORViewerSession::failed, this,
            [this](const QString& product, const QString& reason) {
                report(tr("%1 cannot be shown: %2").arg(product, reason));
            });
    connect(_session.get(), &QUORViewerSession::displayStateChanged, this, [this] {
        _layers->setState(_session->getDisplayState());
        _view->applyOpacity(_session->getDisplayState());
    });
    connect(_cancel, &QToolButton::clicked, this, &QUORViewerWindow::cancel);
    connect(_layers, &QUORLayersPanel::visibleChanged, _session.get(), &QUORViewerSession::setVisible);
    connect(_layers, &QUORLayersPanel::opacityChanged, _session.get(), &QUORViewerSession::setOpacity);
    connect(_surfaces, &QUORSurfacesPanel::edited, _session.get(), &QUORViewerSession::setProductSettings);
    connect(_surfaces, &QUORSurfacesPanel::saveAsked, this, [this] {
        _session->saveProductSettings();
        _status->setText(tr("Stored for the service."));
    });
    connect(_surfaces, &QUORSurfacesPanel::resetAsked, _session.get(), &QUORViewerSession::readSettings);
    connect(_view, &QUORSceneView::placeChosen, _reading, &QUORReadingPanel::setPoint);
    connect(_view, &QUORSceneView::lineDrawn, this,
            [this](const QUORPoint3D& from, const QUORPoint3D& to) { _reading->setLine(from, to); });
    connect(_view, &QUORSceneView::viewChanged, this, &QUORViewerWindow::updateUndo);
    connect(_presets, &QUORPresetsPanel::showAsked, this, &QUORViewerWindow::showPreset);
    connect(_presets, &QUORPresetsPanel::saveAsked, this, &QUORViewerWindow::savePreset);
    connect(_presets, &QUORPresetsPanel::renameAsked, this,
            [this](const QString& name, const QString& newName) {
                finishPresetChange(QUORViewerPresets::rename(name, newName), newName);
            });
    connect(_presets, &QUORPresetsPanel::removeAsked, this,
            [this](const QString& name) { finishPresetChange(QUORViewerPresets::remove(name), name); });
    connect(_presets, &QUORPresetsPanel::pictureAsked, this, &QUORViewerWindow::askServicePicture);
    connect(&_service, &QUORServicePicture::drawn, this, &QUORViewerWindow::showServicePicture);
    connect(&_service, &QUORServicePicture::loopWritten, this, [this](const QString& path) {
        onBusyChanged(_session->isBusy());
        _status->setText(tr("Written: %1").arg(path));
    });
    const auto fail = [this](const QString& reason) {
        onBusyChanged(_session->isBusy());
        report(reason);
    };
    connect(&_service, &QUORServicePicture::failed, this, fail);
    _export = std::make_unique<QUORViewerExport>(*_times, *_session, *_view, _service);
    connect(_export.get(), &QUORViewerExport::failed, this, fail);
    connect(_export.get(), &QUORViewerExport::saved, this,
            [this](const QString& path) { _status->setText(tr("Written: %1").arg(path)); });
    connect(_export.get(), &QUORViewerExport::progressed, this, [this](int done, int all) {
        onBusyChanged(_session->isBusy());
        _status->setText(tr("Drawing the loop: %1 of %2").arg(done).arg(all));
    });
}

void QUORViewerWindow::cancel() {
    _export->cancel();
    _session->cancel();
    _service.cancel();
}

// Opening

void QUORViewerWindow::open(const QString& path) {
    dismiss();
    const QFileInfo info(QUORSystem::toPath(path));
    if (!info.exists()) {
        report(tr("%1 does not exist.").arg(readable(info)));
    } else if (info.isDir()) {
        openFolders(info.absoluteFilePath());
        if (_times->getTimes().isEmpty()) {
            report(tr("%1 holds no volume yet; those that come are shown.").arg(readable(info)));
        }
    } else if (const QString fault = findFault(info); !fault.isEmpty()) {
        report(fault);
    } else {
        const QSignalBlocker quiet(_times.get());
        openFolders(info.absolutePath());
        const bool found = _times->chooseFile(info.absoluteFilePath());
        _times->blockSignals(false);
        Q_EMIT _times->listChanged();
        Q_EMIT _times->currentChanged();
        if (!found) {
            report(tr("%1 is not among the products of its directory: another file there holds the same "
                      "product.")
                       .arg(readable(info)));
        }
    }
}

void QUORViewerWindow::openConfigured() {
    const QString folder = _session->getGeneralSettings()->get3DDir();
    if (folder.isEmpty()) {
        report(tr("Open a product or a directory of products."));
    } else {
        open(folder);
    }
}

void QUORViewerWindow::openFolders(const QString& folder) {
    const QString terrain =
        _folders.terrain.isEmpty() ? _session->getGeneralSettings()->getGeoDir() : _folders.terrain;
    _times->open(folder, findFlatFolder(folder), terrain, TERRAIN_CACHE);
    setWindowTitle(tr("%1 – Radar volumes").arg(folder));
}

// That of the settings belongs to the folder of the settings.
QString QUORViewerWindow::findFlatFolder(const QString& folder) const {
    if (!_folders.flat.isEmpty()) {
        return _folders.flat;
    }
    const QUORGeneralSettings& settings = *_session->getGeneralSettings();
    if (QDir(settings.get3DDir()) == QDir(folder)) {
        return settings.get2DDir();
    }
    const QString sibling = QDir(folder).absoluteFilePath(QStringLiteral("../2d"));
    return QFileInfo(sibling).isDir() ? QDir::cleanPath(sibling) : folder;
}

void QUORViewerWindow::onCurrentChanged() {
    const QUORFileLeaf::Ptr current = _times->getCurrent();
    if (current && current == _session->getScene().leaf) {
        _session->reload();
    }
    _session->show(current, _times->getNeighbour(1));
}

void QUORViewerWindow::onSceneChanged() {
    const QUORViewerScene& scene = _session->getScene();
    dismiss();
    _view->showScene(scene, _session->getGeneralSettings(), _session->getDisplayState());
    const QUORProductSettings::CPtr settings = _session->getProductSettings();
    _surfaces->setSettings(*settings, scene.leaf->getFile()->getDataType());
    _reading->setScene(scene.reader, _session->getGeneralSettings(), settings->getColorMapName());
    QString text = scene.frame->getDataId(_session->getGeneralSettings());
    if (const QUORFileLeaf::CPtr layer = scene.frame->getData2d()) {
        text += tr(", with %1").arg(layer->getProduct());
    }
    _status->setText(text);
    updateUndo();
}

void QUORViewerWindow::onBusyChanged(bool busy) {
    const bool working = busy || _service.isRunning() || (_export && _export->isRunning());
    _progress->setVisible(working);
    _cancel->setVisible(working);
    _timePanel->setBusy(busy);
}

void QUORViewerWindow::updateUndo() {
    if (_redo != nullptr) {
        _undo->setEnabled(_view->canUndo());
        _redo->setEnabled(_view->canRedo());
    }
}

void QUORViewerWindow::report(const QString& message) {
    _message->setText(message);
    _messageBar->show();
}

void QUORViewerWindow::dismiss() {
    _message->clear();
    _messageBar->hide();
}

QString QUORViewerWindow::getMessage() const {
    return _message->text();
}

void QUORViewerWindow::setHeightFactor(double factor) {
    _height->setValue(int(std::lround(factor * HEIGHT_STEPS)));
}

// Presets

void QUORViewerWindow::savePreset(const QString& name) {
    if (_session->getScene().isComplete()) {
        finishPresetChange(QUORViewerPresets::save(name, _view->getView(), _session->getDisplayState()),
                           name);
    }
}

void QUORViewerWindow::showPreset(const QString& name) {
    const QUORViewerPresets::Preset preset = QUORViewerPresets::find(name);
    if (preset.view) {
        _view->setView(*preset.view);
    }
    if (preset.fit) {
        _view->lookFrom(preset.fit->heading, preset.fit->pitch);
    }
    if (preset.state) {
        _session->setDisplayState(*preset.state);
    }
    if (!preset.view && !preset.fit && !preset.state) {
        finishPresetChange(QUORViewerPresets::Result::NoSuchName, name);
    }
}

void QUORViewerWindow::finishPresetChange(QUORViewerPresets::Result result, const QString& name) {
    const QString reason = QUORPresetsPanel::explain(result, name);
    if (reason.isEmpty()) {
        _status->setText(tr("Presets stored for the service."));
    } else {
        report(reason);
    }
    _presets->refresh();
}

QStringList QUORViewerWindow::toolOptions() const {
    QStringList options;
    const QUORViewerScene& scene = _session->getScene();
    const QUORFileLeaf::CPtr layer = scene.frame->getData2d();
    options << QStringLiteral("--with") << (layer ? layer->getPath() : QStringLiteral("none"));
    if (!_folders.terrain.isEmpty()) {
        options << QStringLiteral("--terrain") << _folders.terrain;
    }
    return options;
}

void QUORViewerWindow::askServicePicture(const QString& name) {
    const QUORViewerPresets::Preset preset = QUORViewerPresets::find(name);
    if (!_session->getScene().isComplete() || _service.isRunning()) {
        return;
    }
    _service.draw(_session->getScene().leaf->getPath(), preset.view || preset.fit ? name : QString(),
                  preset.state ? name : QString(), toolOptions());
    onBusyChanged(_session->isBusy());
}

void QUORViewerWindow::showServicePicture(const QImage& image) {
    onBusyChanged(_session->isBusy());
    auto* label = new QLabel;
    label->setPixmap(QPixmap::fromImage(image));
    auto* area = new QScrollArea;
    area->setObjectName(QStringLiteral("servicePicture"));
    area->setAttribute(Qt::WA_DeleteOnClose);
    area->setWidget(label);
    area->setWindowTitle(tr("The service’s picture, %1 × %2").arg(image.width()).arg(image.height()));
    area->resize(image.size().boundedTo(QSize(1600, 1000)) + QSize(4, 4));
    area->setParent(this, Qt::Window);
    area->show();
}

// Export

QString QUORViewerWindow::askTarget(const QString& title, const QString& kinds) {
    return QFileDialog::getSaveFileName(this, title, QDir::homePath(), kinds);
}

void QUORViewerWindow::exportPicture() {
    const QString path = askTarget(tr("Save the picture"), tr("Pictures (*.png *.jpg *.tif)"));
    if (!path.isEmpty()) {
        _export->savePicture(path);
    }
}

void QUORViewerWindow::exportTimes() {
    const int all = int(_times->getTimes().size());
    bool good = all > 0;
    const int count =
        good ? QInputDialog::getInt(this, tr("Save the times as a loop"), tr("How many of the newest times:"),
                                    std::min(all, USUAL_LOOP), 1, all, 1, &good)
             : 0;
    const QString path = good ? askTarget(tr("Save the times as a loop"), tr(MOVING_KINDS)) : QString();
    if (!path.isEmpty()) {
        _export->saveTimes(path, count);
    }
}

void QUORViewerWindow::exportFlight() {
    const QString path = askTarget(tr("Save a flight round the scene"), tr(MOVING_KINDS));
    if (!path.isEmpty() && _session->getScene().isComplete()) {
        _export->saveFlight(path, toolOptions());
        onBusyChanged(_session->isBusy());
    }
}

void QUORViewerWindow::closeEvent(QCloseEvent* event) {
    QUORWindowMemory::store(*this);
    QMainWindow::closeEvent(event);
}
