// SPDX-License-Identifier: MIT
#include "QUORActivity.h"

#include <QMutexLocker>
#include <QSet>

#include <algorithm>

namespace {

constexpr qsizetype MAXIMUM_ARRIVALS = 10000;
const QString OTHER = QStringLiteral("other");

struct OutcomeRow {
    QUORActivity::Outcome outcome;
    bool isFailure;
    const char* reason;
};

constexpr std::array OUTCOMES{
    OutcomeRow{QUORActivity::Outcome::Gone, false, "gone"},
    OutcomeRow{QUORActivity::Outcome::Waits2D, false, "no_2d_product"},
    OutcomeRow{QUORActivity::Outcome::OtherSite, false, "other_site"},
    OutcomeRow{QUORActivity::Outcome::NotBuilt, true, "not_built"},
    OutcomeRow{QUORActivity::Outcome::NotDrawn, true, "not_drawn"},
    OutcomeRow{QUORActivity::Outcome::NotWritten, true, "not_written"},
};

double secondsSince(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

void QUORActivity::Histogram::add(double seconds) {
    for (std::size_t i = 0; i < BOUNDS.size(); ++i) {
        counts[i] += seconds <= BOUNDS[i] ? 1 : 0;
    }
    ++count;
    sum += seconds;
}

std::optional<double> QUORActivity::Image::secondsAfterProduct() const {
    return productTime.isValid() && written.isValid()
               ? std::optional(double(productTime.msecsTo(written)) / 1000.0)
               : std::nullopt;
}

QString QUORActivity::stageName(int stage) {
    static constexpr std::array<const char*, StageCount> NAMES{"data", "scene", "render", "write", "job"};
    return QString::fromLatin1(NAMES.at(std::size_t(stage)));
}

QUORActivity& QUORActivity::Instance() {
    static QUORActivity instance;
    return instance;
}

QUORActivity::QUORActivity() {
    reset();
}

void QUORActivity::reset() {
    const QMutexLocker lock(&_mutex);
    _state = {};
    _state.started = QDateTime::currentDateTimeUtc();
    // A reason that has not come up yet counts 0, so that its first time is seen as an increase.
    for (const OutcomeRow& row : OUTCOMES) {
        (row.isFailure ? _state.failed : _state.ignored).insert(QString::fromLatin1(row.reason), 0);
    }
    _arrivals.clear();
}

void QUORActivity::arrived(const QString& path) {
    const QMutexLocker lock(&_mutex);
    if (_arrivals.size() < MAXIMUM_ARRIVALS) {
        _arrivals.insert(path, Clock::now());
    }
}

void QUORActivity::setWaiting(qsizetype files3d, qsizetype files2d) {
    const QMutexLocker lock(&_mutex);
    _state.waiting3d = files3d;
    _state.waiting2d = files2d;
}

void QUORActivity::setUnwritten(qsizetype images) {
    const QMutexLocker lock(&_mutex);
    _state.unwritten = images;
}

void QUORActivity::beginJob(const QString& path) {
    const QMutexLocker lock(&_mutex);
    _state.job = path;
    _state.jobStarted = QDateTime::currentDateTimeUtc();
    _jobBegin = Clock::now();
    _image = {};
    _outcome = Outcome::NotBuilt;
}

void QUORActivity::describeJob(const QString& site, const QString& configuration,
                               const QDateTime& productTime) {
    const QMutexLocker lock(&_mutex);
    _image.site = site;
    _image.configuration = configuration;
    _image.productTime = productTime;
}

void QUORActivity::addStage(Stage stage, double seconds) {
    const QMutexLocker lock(&_mutex);
    _state.stages.at(std::size_t(stage)).add(seconds);
}

void QUORActivity::setOutcome(Outcome outcome, const QString& image) {
    const QMutexLocker lock(&_mutex);
    _outcome = outcome;
    _image.file = image;
}

void QUORActivity::endJob() {
    {
        const QMutexLocker lock(&_mutex);
        if (_outcome == Outcome::Written) {
            _state.stages[Job].add(secondsSince(_jobBegin));
            _image.written = QDateTime::currentDateTimeUtc();
            if (const auto arrival = _arrivals.constFind(_state.job); arrival != _arrivals.cend()) {
                _image.secondsAfterArrival = secondsSince(*arrival);
            }
            countImage(_image);
        }
        for (const OutcomeRow& row : OUTCOMES) {
            if (row.outcome == _outcome) {
                ++(row.isFailure ? _state.failed : _state.ignored)[QString::fromLatin1(row.reason)];
            }
        }
        // What waits for its 2D product is late from its own arrival on.
        if (_outcome != Outcome::Waits2D) {
            _arrivals.remove(_state.job);
        }
        _state.job.clear();
    }
    Q_EMIT jobEnded();
}

void QUORActivity::countImage(const Image& image) {
    ++_state.written;
    _state.last = image;
    if (const auto seconds = image.secondsAfterProduct()) {
        _state.afterProduct.add(*seconds);
    }
    if (image.secondsAfterArrival) {
        _state.afterArrival.add(*image.secondsAfterArrival);
    }
    QSet<QString> sites;
    for (auto known = _state.images.keyBegin(); known != _state.images.keyEnd(); ++known) {
        sites.insert(known->first);
    }
    const bool hasRoom = sites.contains(image.site) || sites.size() < MAXIMUM_SITES;
    _state.images.insert(hasRoom ? std::pair(image.site, image.configuration) : std::pair(OTHER, OTHER),
                         image);
}

double QUORActivity::secondsInJob() const {
    const QMutexLocker lock(&_mutex);
    return _state.job.isEmpty() ? 0.0 : secondsSince(_jobBegin);
}

QUORActivity::Snapshot QUORActivity::getSnapshot() const {
    const QMutexLocker lock(&_mutex);
    return _state;
}

QUORActivityStage::~QUORActivityStage() {
    QUORActivity::Instance().addStage(_stage, secondsSince(_begin));
}
