// SPDX-License-Identifier: MIT
#include "QUORVisualizationJobs.h"

#include "QUORActivity.h"
#include "QUORConfig.h"
#include "QUORDataFrame.h"
#include "QUORDataStore.h"
#include "QUORFilePublisher.h"
#include "QUORLog.h"
#include "QUOROffscreenVisualizer.h"
#include "QUORStopwatch.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>

namespace {

constexpr int RULE_LENGTH = 73;
constexpr qint64 CLEANING_INTERVAL_MS = 24LL * 60 * 60 * 1000;
constexpr double TERRAIN_FACTOR = 0.75;

void logRule() {
    QUORLog::Instance().logDebug(QString(RULE_LENGTH, QLatin1Char('=')));
}

void logGone(const QString& path) {
    QUORActivity::Instance().setOutcome(QUORActivity::Outcome::Gone);
    QUORLog::Instance().logWarning(QStringLiteral("Data not available anymore: ") + path);
}

// A name of one file, neither hidden nor a way out of its directory.
QString toFileName(QString name) {
    for (QChar& c : name) {
        if (c == QLatin1Char('/') || c.category() == QChar::Other_Control) {
            c = QLatin1Char('_');
        }
    }
    name.replace(QStringLiteral(".."), QStringLiteral("__"));
    if (name.startsWith(QLatin1Char('.'))) {
        name[0] = QLatin1Char('_');
    }
    return name;
}

/// One turn of a file, whatever way it ends.
class Job {
public:
    explicit Job(const QString& path) { QUORActivity::Instance().beginJob(path); }
    ~Job() { QUORActivity::Instance().endJob(); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
};

QString fileNameOf(const QString& path) {
    return QFileInfo(path).fileName();
}

} // namespace

QUORVisualizationJobs::QUORVisualizationJobs(std::shared_ptr<QUORDataStore> store,
                                             QUORGeneralSettings::CPtr generalSettings,
                                             QUORBackgroundSettings::CPtr backgroundSettings,
                                             std::shared_ptr<QUOROffscreenVisualizer> visualizer,
                                             const std::atomic<bool>& stopRequested)
    : _dataStore(std::move(store)),
      _generalSettings(std::move(generalSettings)),
      _backgroundSettings(std::move(backgroundSettings)),
      _visualizer(std::move(visualizer)),
      _stopRequested(stopRequested) {}

QUORVisualizationJobs::~QUORVisualizationJobs() = default;

void QUORVisualizationJobs::visualize(const QString& path, bool required2D) {
    logRule();
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Visualize:"));
    log.logDebug(path);
    logRule();
    const QUORStopwatch stopwatch;
    const Job job(path);
    const bool visualized = render(path, required2D);
    const QString seconds = stopwatch.seconds();
    logRule();
    log.logNotice(visualized ? QStringLiteral("File visualized in ") + seconds + QStringLiteral(" seconds.")
                             : QStringLiteral("File visualization ignored."));
    logRule();
    log.logDebug({});
}

bool QUORVisualizationJobs::render(const QString& path, bool required2D) {
    const QUORDirTop::Ptr top = _dataStore->get3DTop();
    const QUORFileLeaf::CPtr leaf = top ? top->findLeaf(fileNameOf(path)) : nullptr;
    if (!leaf || !leaf->getFile() || !leaf->getFile()->isUnchanged()) {
        logGone(path);
        return false;
    }
    QUORActivity::Instance().describeJob(leaf->getSite(), leaf->getConfiguration(),
                                         leaf->getFile()->getDataTime());
    const QUORStopwatch dataWatch;
    const QString product2d = _backgroundSettings->get2DProduct(leaf->getConfiguration());
    const auto frame = makeFrame(leaf, product2d);
    QUORActivity::Instance().addStage(QUORActivity::Data, dataWatch.elapsed());
    if (!frame) {
        logGone(path);
        return false;
    }
    if (!isWanted(frame, leaf, product2d, required2D)) {
        return false;
    }
    cleanOutputDirectory(*_backgroundSettings);
    _visualizer->startVisualization(frame, getOutputFile(*leaf, *_backgroundSettings));
    return _visualizer->waitUntilReady();
}

// A service that was killed leaves the image that it was writing.
void QUORVisualizationJobs::cleanOutputDirectory(const QUORBackgroundSettings& settings) {
    const QString directory = settings.getDirectory();
    if (directory != _cleanedDirectory || _sinceCleaning.hasExpired(CLEANING_INTERVAL_MS)) {
        QUORFilePublisher::removeLeftovers(directory);
        _cleanedDirectory = directory;
        _sinceCleaning.start();
    }
}

std::shared_ptr<QUORDataFrame> QUORVisualizationJobs::makeFrame(const QUORFileLeaf::CPtr& leaf,
                                                                const QString& product2d) const {
    auto frame = std::make_shared<QUORDataFrame>(_dataStore);
    frame->setData3d(leaf);
    frame->setMoment(leaf->getTime(), _generalSettings->getTimeWindow());
    frame->setDataParams2d(product2d);
    const QUORFile::CPtr file = leaf->getFile();
    frame->setDataParamsTerrain(TERRAIN_FACTOR *
                                std::hypot(file->getLengthAroundRadarM(), file->getWidthAroundRadarM()));
    {
        // Presets and product settings from one reading of the file.
        const QUORConfig::Access held;
        _visualizer->initVisualization(*_generalSettings, *_backgroundSettings);
        if (!frame->updateData3d()) {
            return nullptr;
        }
    }
    frame->updateDataRest();
    return frame;
}

bool QUORVisualizationJobs::isWanted(const std::shared_ptr<QUORDataFrame>& frame,
                                     const QUORFileLeaf::CPtr& leaf, const QString& product2d,
                                     bool required2D) {
    if (_visualizer->canVisualize(frame, required2D) || QUORBackgroundSettings::isNoProduct(product2d)) {
        _missing2D.forget(*leaf);
        return true;
    }
    QUORActivity::Instance().setOutcome(QUORActivity::Outcome::Waits2D);
    if (!required2D) {
        _missing2D.report(leaf, product2d, _generalSettings->getTimeWindow(), _dataStore->get2DTop().get());
    }
    return false;
}

QString QUORVisualizationJobs::getOutputFile(const QUORFileLeaf& leaf,
                                             const QUORBackgroundSettings& settings) {
    const QString name =
        leaf.getSite() + QLatin1Char('_') + leaf.getConfiguration() + QLatin1Char('_') + leaf.getTime();
    // A name that begins with ":" is no path of its own.
    return QDir(settings.getDirectory()).absolutePath() + QLatin1Char('/') + toFileName(name) +
           settings.getOutputFileExtension();
}

void QUORVisualizationJobs::visualize2D(const QString& path) {
    const QUOR2DTop::Ptr top2d = _dataStore->get2DTop();
    const QUORFileLeaf::CPtr leaf2d = top2d ? top2d->findLeaf(fileNameOf(path)) : nullptr;
    if (!leaf2d) {
        logGone(path);
        return;
    }
    const int timeWindow = _generalSettings->getTimeWindow();
    bool isUsed = false;
    for (const QString& configuration : QUORBackgroundSettings::getAllConfigurations()) {
        const auto top3d = _dataStore->get3DTop();
        if (_stopRequested || !top3d ||
            _backgroundSettings->get2DProduct(configuration) != leaf2d->getProduct()) {
            continue;
        }
        const QUORFileLeaf::CPtr leaf3d = top3d->find3DFileMatching2DFile(leaf2d, configuration, timeWindow);
        if (leaf3d && leaf3d->getFile()) {
            QUORLog::Instance().logNotice(QStringLiteral("Found ") + configuration +
                                          QStringLiteral(" file matching 2d product ") + path);
            isUsed = true;
            visualize(leaf3d->getPath(), true);
        }
    }
    if (!isUsed) {
        _missing2D.reportAgain(*leaf2d, timeWindow, top2d.get());
    }
}
