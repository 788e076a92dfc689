// SPDX-License-Identifier: MIT
#include "QUORVisualizationJobs.h"

#include "QUORActivity.h"
#include "QUORConfig.h"
#include "QUORDataFrame.h"
#include "QUORDataStore.h"
#include "QUORFilePublisher.h"
#include "QUORImageName.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUOROffscreenVisualizer.h"
#include "QUORStopwatch.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace {

constexpr int RULE_LENGTH = 73;
constexpr qint64 CLEANING_INTERVAL_MS = 24LL * 60 * 60 * 1000;
constexpr double TERRAIN_FACTOR = 0.75;
/// Less than most images: a disk that is nearly full costs an attempt.
constexpr qint64 PROBED_SIZE = 256LL * 1024;

void logRule() {
    QUORLog::Instance().logDebug(QString(RULE_LENGTH, QLatin1Char('=')));
}

void logGone(const QString& path) {
    QUORActivity::Instance().setOutcome(QUORActivity::Outcome::Gone);
    QUORLog::Instance().logWarning(QStringLiteral("Data not available anymore: ") + path);
}

/// One turn of a file, whatever way it ends.
class Job {
public:
    explicit Job(const QString& path) { QUORActivity::Instance().beginJob(path); }
    ~Job() { QUORActivity::Instance().endJob(); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
};

/// Leaves those of the first one's display state, which are drawn of one scene.
std::vector<QUORPictureOrder> takeOtherStates(std::vector<QUORPictureOrder>& orders) {
    const QString state = orders.front().displayState;
    const auto others = std::ranges::stable_partition(
        orders, [&state](const QUORPictureOrder& order) { return order.displayState == state; });
    std::vector<QUORPictureOrder> taken(std::make_move_iterator(others.begin()),
                                        std::make_move_iterator(others.end()));
    orders.erase(others.begin(), others.end());
    return taken;
}

} // namespace

QUORVisualizationJobs::QUORVisualizationJobs(std::shared_ptr<QUORDataStore> store,
                                             QUORGeneralSettings::CPtr generalSettings,
                                             QUORBackgroundSettings::CPtr backgroundSettings,
                                             std::shared_ptr<QUOROffscreenVisualizer> visualizer)
    : _dataStore(std::move(store)),
      _generalSettings(std::move(generalSettings)),
      _backgroundSettings(std::move(backgroundSettings)),
      _visualizer(std::move(visualizer)) {}

QUORVisualizationJobs::~QUORVisualizationJobs() = default;

QUORVisualizationJobs::Result QUORVisualizationJobs::visualize(const QString& path, Need2D need) {
    logRule();
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Visualize:"));
    log.logDebug(path);
    logRule();
    const QUORStopwatch stopwatch;
    const Job job(path);
    const Result result = render(path, need);
    const QString seconds = stopwatch.seconds();
    logRule();
    log.logNotice(result == Visualized
                      ? QStringLiteral("File visualized in ") + seconds + QStringLiteral(" seconds.")
                      : QStringLiteral("File visualization ignored."));
    logRule();
    log.logDebug({});
    return result;
}

QUORVisualizationJobs::Result QUORVisualizationJobs::render(const QString& path, Need2D need) {
    const QUORDirTop::Ptr top = _dataStore->get3DTop();
    const QUORFileLeaf::CPtr leaf = top ? top->findLeaf(QUORFile::nameOf(path)) : nullptr;
    if (!leaf || !leaf->getFile() || !leaf->getFile()->isUnchanged()) {
        logGone(path);
        return Ignored;
    }
    if (!_backgroundSettings->isSiteDrawn(leaf->getSite())) {
        logDebug(QStringLiteral("The settings leave this site to another service: ") + leaf->getSite());
        QUORActivity::Instance().setOutcome(QUORActivity::Outcome::OtherSite);
        return Ignored;
    }
    QUORActivity::Instance().describeJob(leaf->getSite(), leaf->getConfiguration(),
                                         leaf->getFile()->getDataTime());
    const QUORStopwatch dataWatch;
    const QString product2d = _backgroundSettings->get2DProduct(leaf->getConfiguration());
    const auto frame = makeFrame(leaf, product2d);
    QUORActivity::Instance().addStage(QUORActivity::Data, dataWatch.elapsed());
    if (!frame) {
        logGone(path);
        return Ignored;
    }
    cleanOutputDirectory(*_backgroundSettings);
    std::vector<QUORPictureOrder> orders = getOrders(*leaf, *_backgroundSettings);
    std::vector<QUORPictureOrder> rest = takeOtherStates(orders);
    Result result = need == AsShown ? Missing2D : Ignored;
    if (isWanted(frame, leaf, product2d, need)) {
        result = draw(frame, orders);
    }
    const bool waived = need == Waived || QUORBackgroundSettings::isNoProduct(product2d);
    return rest.empty() ? result : drawFurther(frame, std::move(rest), waived ? Waived : need, result);
}

/// The pictures of the other display states, a scene each. What one lacks does not keep back the others.
QUORVisualizationJobs::Result QUORVisualizationJobs::drawFurther(const std::shared_ptr<QUORDataFrame>& frame,
                                                                 std::vector<QUORPictureOrder> orders,
                                                                 Need2D need, Result first) {
    Result result = first;
    QUORBackgroundSettings settings(*_backgroundSettings);
    while (!orders.empty()) {
        std::vector<QUORPictureOrder> rest = takeOtherStates(orders);
        settings.setDisplayStateName(orders.front().displayState);
        _visualizer->initVisualization(*_generalSettings, settings);
        if (need == Waived || _visualizer->canVisualize(frame, need == Required)) {
            const Result drawn = draw(frame, orders);
            if (drawn == NotWritten || (drawn == Visualized && result != NotWritten)) {
                result = drawn;
            }
        }
        orders = std::move(rest);
    }
    return result;
}

QUORVisualizationJobs::Result QUORVisualizationJobs::draw(const std::shared_ptr<QUORDataFrame>& frame,
                                                          const std::vector<QUORPictureOrder>& orders) {
    _visualizer->startVisualization(frame, orders);
    switch (_visualizer->waitUntilReady()) {
    case QUOROffscreenVisualizer::Written:
        return Visualized;
    case QUOROffscreenVisualizer::NotWritten:
        return NotWritten;
    case QUOROffscreenVisualizer::NotDrawn:
        break;
    }
    return Ignored;
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

std::shared_ptr<QUORDataFrame> QUORVisualizationJobs::prepareFrame(std::shared_ptr<QUORDataStore> store,
                                                                   const QUORFileLeaf::CPtr& leaf,
                                                                   const QUORGeneralSettings& settings) {
    auto frame = std::make_shared<QUORDataFrame>(std::move(store));
    frame->setData3d(leaf);
    frame->setMoment(leaf->getTime(), settings.getTimeWindow());
    const QUORFile::CPtr file = leaf->getFile();
    frame->setDataParamsTerrain(TERRAIN_FACTOR *
                                std::hypot(file->getLengthAroundRadarM(), file->getWidthAroundRadarM()));
    return frame;
}

std::shared_ptr<QUORDataFrame> QUORVisualizationJobs::makeFrame(const QUORFileLeaf::CPtr& leaf,
                                                                const QString& product2d) const {
    auto frame = prepareFrame(_dataStore, leaf, *_generalSettings);
    frame->setDataParams2d(product2d);
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
                                     const QUORFileLeaf::CPtr& leaf, const QString& product2d, Need2D need) {
    if (_visualizer->canVisualize(frame, need == Required) ||
        QUORBackgroundSettings::isNoProduct(product2d)) {
        _missing2D.forget(*leaf);
        return true;
    }
    QUORActivity::Instance().setOutcome(QUORActivity::Outcome::Waits2D);
    const int wait = _backgroundSettings->getWait2D();
    if (need == Waived || (need == AsShown && wait < 0)) {
        _missing2D.report(leaf, product2d, _generalSettings->getTimeWindow(), _dataStore->get2DTop().get(),
                          need == Waived ? std::max(wait, 0) : -1);
    }
    return need == Waived;
}

QString QUORVisualizationJobs::getOutputFile(const QUORFileLeaf& leaf,
                                             const QUORBackgroundSettings& settings) {
    const QString name =
        leaf.getSite() + QLatin1Char('_') + leaf.getConfiguration() + QLatin1Char('_') + leaf.getTime();
    // A name that begins with ":" is no path of its own.
    return QDir(settings.getDirectory()).absolutePath() + QLatin1Char('/') + QUORImageName::clean(name) +
           settings.getOutputFileExtension();
}

std::vector<QUORPictureOrder> QUORVisualizationJobs::getOrders(const QUORFileLeaf& leaf,
                                                               const QUORBackgroundSettings& settings) {
    const QString path = getOutputFile(leaf, settings);
    const QString ending = settings.getOutputFileExtension();
    const QString start = path.chopped(ending.size());
    const QList<QUORBackgroundSettings::View> views = settings.getViews();
    const QUORBackgroundSettings::View& first = views.constFirst();
    std::vector<QUORPictureOrder> orders;
    for (const QUORBackgroundSettings::View& view : views) {
        QString name;
        if (view.viewAngle != first.viewAngle) {
            name += QLatin1Char('_') + view.viewAngle;
        }
        if (view.displayState != first.displayState) {
            name += QLatin1Char('_') + view.displayState;
        }
        if (view.width != first.width || view.height != first.height) {
            name += QStringLiteral("_%1x%2").arg(view.width).arg(view.height);
        }
        QUORPictureOrder order;
        order.path = start + QUORImageName::clean(name) + ending;
        order.viewAngle = view.viewAngle;
        order.displayState = view.displayState;
        order.width = view.width;
        order.height = view.height;
        order.format = settings.getOutputFormat();
        if (std::ranges::find(orders, order.path, &QUORPictureOrder::path) == orders.end()) {
            orders.push_back(order);
        } else {
            QUORLogOnce::logWarning(
                QStringLiteral("picture") + name,
                QStringLiteral("Two of the views would have the same name, the first is drawn: ") +
                    order.path);
        }
    }
    return orders;
}

QStringList QUORVisualizationJobs::findCompleted(const QString& path) {
    const QUOR2DTop::Ptr top2d = _dataStore->get2DTop();
    const QUORFileLeaf::CPtr leaf2d = top2d ? top2d->findLeaf(QUORFile::nameOf(path)) : nullptr;
    if (!leaf2d) {
        logGone(path);
        return {};
    }
    QStringList files;
    const int timeWindow = _generalSettings->getTimeWindow();
    for (const QString& configuration : QUORBackgroundSettings::getAllConfigurations()) {
        const auto top3d = _dataStore->get3DTop();
        if (!top3d || _backgroundSettings->get2DProduct(configuration) != leaf2d->getProduct()) {
            continue;
        }
        const QUORFileLeaf::CPtr leaf3d = top3d->find3DFileMatching2DFile(leaf2d, configuration, timeWindow);
        if (leaf3d && leaf3d->getFile()) {
            QUORLog::Instance().logNotice(QStringLiteral("Found ") + configuration +
                                          QStringLiteral(" file matching 2d product ") + path);
            files.append(leaf3d->getPath());
        }
    }
    if (files.isEmpty()) {
        _missing2D.reportAgain(*leaf2d, timeWindow, top2d.get());
    }
    return files;
}

bool QUORVisualizationJobs::canWrite(const QUORFileLeaf& leaf) const {
    QUORFilePublisher probe(getOutputFile(leaf, *_backgroundSettings));
    return probe.isReady() && probe.reserve(PROBED_SIZE);
}
