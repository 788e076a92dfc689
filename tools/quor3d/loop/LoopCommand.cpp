// SPDX-License-Identifier: MIT
#include "LoopCommand.h"

#include "LoopEncoder.h"
#include "LoopTimeline.h"
#include "QUORBackgroundSettings.h"
#include "QUORFile.h"
#include "QUORLog.h"
#include "RenderProgress.h"
#include "ToolApplication.h"
#include "WorkerPool.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QTemporaryDir>

#include <cmath>
#include <iostream>

namespace {

/// The distance from which a product is seen whole all round, in half diagonals.
constexpr double ORBIT_DISTANCE = 3.3;

void complain(const QString& text) {
    std::cerr << "quor3d loop: " << text.toStdString() << '\n';
}

QString describe(const PictureSeries& series) {
    QString text = series.site + QLatin1Char(' ') + series.configuration;
    return series.view.isEmpty() ? text : text + QLatin1Char(' ') + series.view;
}

} // namespace

std::string LoopCommand::examples() const {
    return "  quor3d loop /data/images --site KLOT --configuration Z -o klot.webp\n"
           "  quor3d loop /data/images --site KLOT --configuration Z --last 48 --rate 12 -o klot.mp4\n"
           "  quor3d loop --orbit CAZ210729123848.cap --pitch 30 --size 1280x960 -o round.mp4\n";
}

void LoopCommand::addOptions(CLI::App& app) {
    app.add_option("SOURCE", _source, "A folder of pictures; with --orbit a 3D product file.")->required();
    app.add_option("-o,--output", _output, "The moving picture: .webp, .mp4 or .gif.")->required();
    app.add_option("--site", _site, "The site of the pictures; may be left out where there is one.");
    app.add_option("--configuration", _configuration, "Their configuration, such as Z; likewise.");
    app.add_option("--view", _view, "Their view; the first view without it.");
    app.add_option("--last", _last, "How many pictures, the newest.")
        ->check(CLI::Range(1, 100000))
        ->capture_default_str();
    app.add_option("--step", _step,
                   "Seconds of time from frame to frame; found from the pictures without it.")
        ->check(CLI::Range(1, 86400));
    app.add_option("--rate", _rate, "Frames a second.")->check(CLI::Range(0.1, 60.0))->capture_default_str();
    app.add_option("--dwell", _dwell, "Seconds for which the last picture stands.")
        ->check(CLI::Range(0.0, 60.0))
        ->capture_default_str();
    app.add_option("--width", _width, "Pixels; that of the pictures without it.")
        ->check(CLI::Range(16, 16384));
    app.add_option("--quality", _quality, "1 (small) to 100.")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    app.add_flag("--orbit", _isOrbit, "A flight round the scene of a product file.");
    app.add_option("--frames", _frames, "Frames of the flight.")
        ->check(CLI::Range(2, 3600))
        ->capture_default_str();
    app.add_option("--pitch", _pitch, "Of the flight: degrees below the horizon.")
        ->check(CLI::Range(0.0, 90.0))
        ->capture_default_str();
    app.add_option("--distance", _distance, "Of the flight: kilometres from the site.")
        ->check(CLI::Range(1.0, 4000.0));
    app.add_option("--jobs", _jobs, "Of the flight: processes that draw at the same time.")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    _scene.addTo(app);
}

ExitStatus LoopCommand::run() {
    const ToolApplication application;
    if (!LoopEncoder::isKnownFormat(QString::fromStdString(_output))) {
        complain(QString::fromStdString(_output) +
                 QStringLiteral(": the name must end in .webp, .mp4 or .gif"));
        return ExitStatus::WrongUse;
    }
    return _isOrbit ? fly() : loopPictures();
}

ExitStatus LoopCommand::loopPictures() const {
    const QString folder = QString::fromStdString(_source);
    PictureCatalogue catalogue(folder);
    if (!catalogue.getError().isEmpty()) {
        complain(catalogue.getError());
        return ExitStatus::Found;
    }
    catalogue.keepNewest(std::size_t(_last));
    std::vector<const PictureSeries*> found;
    QStringList names;
    for (const PictureSeries& series : catalogue.getSeries()) {
        names.append(describe(series));
        const auto fits = [](const std::string& wanted, const QString& actual) {
            return wanted.empty() || QString::fromStdString(wanted) == actual;
        };
        if (fits(_site, series.site) && fits(_configuration, series.configuration) &&
            series.view == QString::fromStdString(_view)) {
            found.push_back(&series);
        }
    }
    if (found.size() != 1) {
        complain((found.empty() ? QStringLiteral("no such pictures in ")
                                : QStringLiteral("more than one series in ")) +
                 folder + QStringLiteral(", there are: ") + names.join(QStringLiteral(", ")));
        return ExitStatus::Found;
    }
    const LoopTimeline timeline(found.front()->pictures, _step);
    if (timeline.getHeld() > 0) {
        complain(QStringLiteral("at %1 of %2 steps of %3 s there is no picture: the one before is held")
                     .arg(timeline.getHeld())
                     .arg(timeline.getFrames().size() + timeline.getLeftOut())
                     .arg(timeline.getStep()));
    }
    QStringList frames;
    for (const QString& name : timeline.getFrames()) {
        frames.append(QDir(folder).filePath(name));
    }
    return encode(frames, _dwell);
}

ExitStatus LoopCommand::fly() {
    QUORLog::Instance().logOpen(QString());
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/quor3d-loop.XXXXXX"));
    QString problem = folder.isValid() ? _scene.applySettings(folder.path()) : folder.errorString();
    if (problem.isEmpty()) {
        problem = _scene.findProblem();
    }
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitStatus::WrongUse;
    }
    const QString input = QFileInfo(QString::fromStdString(_source)).absoluteFilePath();
    const QUORFile file(input);
    if (!file.isValid()) {
        complain(input + QStringLiteral(": not a whole product file"));
        return ExitStatus::Found;
    }
    const double distance = _distance > 0.0
                                ? 1000.0 * _distance
                                : ORBIT_DISTANCE * 0.5 * std::hypot(file.getWidthM(), file.getLengthM());
    std::vector<RenderTask> tasks(std::size_t(std::min(_jobs, _frames)));
    QStringList frames;
    for (int i = 0; i < _frames; ++i) {
        RenderTask& task = tasks[std::size_t(i) * tasks.size() / std::size_t(_frames)];
        task.input = input;
        task.with = _scene.getWith();
        RenderTask::Picture picture;
        picture.state = QUORBackgroundSettings().getDisplayStateName();
        picture.order.angles = QUORPictureOrder::Angles{360.0 * i / _frames, _pitch, distance};
        picture.order.width = _scene.getSize().width();
        picture.order.height = _scene.getSize().height();
        picture.order.format = QUORExportSettings::Png;
        picture.order.path = folder.filePath(QStringLiteral("%1.png").arg(i, 5, 10, QLatin1Char('0')));
        frames.append(picture.order.path);
        task.pictures.push_back(picture);
    }
    RenderProgress progress(frames.size());
    bool isGood = true;
    WorkerPool pool(
        int(tasks.size()), folder.path(),
        [&](const WorkerPool::Result& result) {
            progress.step();
            if (isGood && !result.error.isEmpty()) {
                progress.say(input + QStringLiteral(": ") + result.error);
                isGood = false;
            }
        },
        [&progress](const QString& line) { progress.say(line); });
    return pool.run(tasks) && isGood ? encode(frames, 0.0) : ExitStatus::Found;
}

QSize LoopCommand::frameSize(const QSize& picture) const {
    return _width > 0 ? QSize(_width, int(std::lround(double(_width) * picture.height() / picture.width())))
                      : picture;
}

ExitStatus LoopCommand::encode(const QStringList& frames, double dwell) const {
    const QString output = QString::fromStdString(_output);
    QImage picture;
    for (const QString& frame : frames) {
        if (picture.load(frame)) {
            break;
        }
    }
    if (picture.isNull()) {
        complain(frames.value(0) + QStringLiteral(": no picture can be read"));
        return ExitStatus::Found;
    }
    LoopEncoder encoder(output, frameSize(picture.size()), _rate, _quality);
    QString current;
    bool isGood = true;
    for (qsizetype i = 0; i < frames.size(); ++i) {
        if (frames[i] != current) {
            QImage next(frames[i]);
            if (next.isNull()) {
                complain(frames[i] + QStringLiteral(": cannot be read, the picture before is held"));
                isGood = false;
            } else {
                picture = next;
            }
            current = frames[i];
        }
        const int more = i + 1 == frames.size() ? int(std::lround(dwell * _rate)) : 0;
        if (!encoder.add(picture, 1 + more)) {
            break;
        }
    }
    if (!encoder.finish()) {
        complain(encoder.getError());
        return ExitStatus::Found;
    }
    std::cout << output.toStdString() << std::endl;
    return isGood ? ExitStatus::Success : ExitStatus::Found;
}
