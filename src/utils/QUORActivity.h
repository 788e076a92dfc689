// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QString>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

/// What the service does and has done since its start, for those who watch it. Any thread may tell and ask;
/// one mutex guards all of it, held for moments only.
class QUORActivity : public QObject {
    Q_OBJECT

public:
    /// Where the time of an image goes.
    enum Stage { Data, Scene, Render, Write, Job, StageCount };
    /// How a job ends, besides an image.
    enum class Outcome {
        Written,
        Gone,      ///< the product is not what it was, or not there
        Waits2D,   ///< no image without the 2D product
        OtherSite, ///< the settings leave its site to another service
        NotBuilt,  ///< no scene, or none with its product
        NotDrawn,  ///< no OpenGL, or it failed
        NotWritten ///< the output did not take it
    };

    /// Counts of values up to each bound, and all of them.
    struct Histogram {
        /// Seconds.
        static constexpr std::array<double, 12> BOUNDS{0.05, 0.1, 0.25, 0.5, 1.0,   2.5,
                                                       5.0,  10., 30.,  60., 300.0, 900.0};
        std::array<quint64, BOUNDS.size()> counts{};
        quint64 count = 0;
        double sum = 0.0;

        void add(double seconds);
    };
    struct Image {
        QString file;
        QString site;
        QString configuration;
        QDateTime productTime; ///< invalid when the product states none
        QDateTime written;
        std::optional<double> secondsAfterArrival;

        /// Seconds from the product's time to the image.
        std::optional<double> secondsAfterProduct() const;
    };
    /// One state of everything.
    struct Snapshot {
        QDateTime started;
        quint64 written = 0;
        QMap<QString, quint64> failed;  ///< by reason
        QMap<QString, quint64> ignored; ///< by reason
        std::array<Histogram, StageCount> stages;
        Histogram afterProduct;
        Histogram afterArrival;
        qsizetype waiting3d = 0;
        qsizetype waiting2d = 0;
        qsizetype unwritten = 0;
        QString job; ///< the file of the running job, empty for none
        QDateTime jobStarted;
        std::optional<Image> last;
        /// The last image by site and configuration. Beyond MAXIMUM_SITES sites all go as "other".
        QMap<std::pair<QString, QString>, Image> images;
    };

    static constexpr qsizetype MAXIMUM_SITES = 200;
    static QString stageName(int stage);

    /// The one of this process.
    static QUORActivity& Instance();

    /// A product file was reported; the time counts until its image, for the last 10,000 at most.
    void arrived(const QString& path);
    void setWaiting(qsizetype files3d, qsizetype files2d);
    /// How many images could not be written and are to be drawn again.
    void setUnwritten(qsizetype images);
    void beginJob(const QString& path);
    /// The running job's product.
    void describeJob(const QString& site, const QString& configuration, const QDateTime& productTime);
    void addStage(Stage stage, double seconds);
    /// What the running job will end as; the last call counts.
    void setOutcome(Outcome outcome, const QString& image = {});
    /// A job of which nobody said anything has not been built. Emits `jobEnded`.
    void endJob();

    /// Seconds since the running job began; 0 when none runs.
    double secondsInJob() const;
    Snapshot getSnapshot() const;
    /// Forgets everything, for tests.
    void reset();

Q_SIGNALS:
    /// On the thread of the job.
    void jobEnded();

private:
    using Clock = std::chrono::steady_clock;

    QUORActivity();
    void countImage(const Image& image);

    mutable QMutex _mutex;
    Snapshot _state;
    QHash<QString, Clock::time_point> _arrivals;
    Clock::time_point _jobBegin;
    Image _image; ///< of the running job
    Outcome _outcome = Outcome::NotBuilt;
};

/// Measures one stage of a job until the end of the scope.
class QUORActivityStage {
public:
    explicit QUORActivityStage(QUORActivity::Stage stage) : _stage(stage) {}
    ~QUORActivityStage();
    QUORActivityStage(const QUORActivityStage&) = delete;
    QUORActivityStage& operator=(const QUORActivityStage&) = delete;

private:
    QUORActivity::Stage _stage;
    std::chrono::steady_clock::time_point _begin = std::chrono::steady_clock::now();
};
