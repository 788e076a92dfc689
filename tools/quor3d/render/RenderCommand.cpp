// SPDX-License-Identifier: MIT
#include "RenderCommand.h"

#include "QUORBackgroundSettings.h"
#include "QUORFilePublisher.h"
#include "QUORGeneralSettings.h"
#include "QUORLog.h"
#include "RenderProgress.h"
#include "RenderReport.h"
#include "RenderWorker.h"
#include "ToolApplication.h"
#include "WorkerPool.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <iostream>

namespace {

const QString STANDARD_OUTPUT = QStringLiteral("-");

void complain(const QString& text) {
    std::cerr << "quor3d render: " << text.toStdString() << '\n';
}

QString findUnknown(const char* kind, const QStringList& wanted, const QStringList& known) {
    for (const QString& name : wanted) {
        if (!known.contains(name) && name != QStringLiteral("Default")) {
            return QStringLiteral("there is no %1 \"%2\", only \"%3\"")
                .arg(QLatin1String(kind), name, known.join(QStringLiteral("\", \"")));
        }
    }
    return {};
}

QStringList toList(const std::vector<std::string>& texts) {
    QStringList list;
    for (const std::string& text : texts) {
        list.append(QString::fromStdString(text));
    }
    return list;
}

std::vector<std::string> toStandard(const QStringList& list) {
    std::vector<std::string> texts;
    for (const QString& text : list) {
        texts.push_back(text.toStdString());
    }
    return texts;
}

/// Of the ending of a file name; nothing for another one.
std::optional<QUORExportSettings::OutputFormat> formatOf(const QString& path) {
    const QString ending = QFileInfo(path).suffix().toLower();
    for (const QString& name : QUORExportSettings::getSupportedOutputFormats()) {
        const auto format = QUORExportSettings::getOutputFormatFromString(name);
        if (ending == name.toLower() ||
            QLatin1Char('.') + ending == QUORExportSettings::getOutputFileExtension(format) ||
            (ending == QStringLiteral("tif") && format == QUORExportSettings::Tiff)) {
            return format;
        }
    }
    return std::nullopt;
}

bool copyToStandardOutput(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray bytes = file.readAll();
    std::cout.write(bytes.constData(), bytes.size());
    return bool(std::cout.flush());
}

} // namespace

std::string RenderCommand::examples() const {
    return "  quor3d render CAZ210729123848.cap -o storm.png\n"
           "  quor3d render archive/*.cap -o pictures --jobs 4 --resume --report report.jsonl\n"
           "  quor3d render storm.cap -o out --heading 45 --pitch 30 --size 1920x1080\n"
           "  quor3d render storm.cap -o out --view 'From the south' --view Above --state '3D only' --state "
           "Default\n"
           "  quor3d render storm.cap -o - --format PNG --set verticalscale=3 >storm.png\n";
}

void RenderCommand::addOptions(CLI::App& app) {
    _app = &app;
    app.add_option("FILE", _files, "3D product files.");
    app.add_option("-o,--output", _output,
                   "The picture; a folder, made where it is missing, for several; - for standard output.");
    app.add_option("--view", _views,
                   "Name of a view angle; several times for several pictures of each scene.")
        ->take_all()
        ->expected(1);
    app.add_option("--state", _states, "Name of a display state; likewise.")->take_all()->expected(1);
    app.add_option("--heading", _heading,
                   "In place of a view: the direction looked to, degrees clockwise from north.");
    app.add_option("--pitch", _pitch, "Degrees below the horizon, 40 without it.")
        ->check(CLI::Range(0.0, 90.0));
    auto* distance =
        app.add_option("--distance", _distance, "Kilometres from the site.")->check(CLI::Range(1.0, 4000.0));
    app.add_flag("--fit", _isFitted,
                 "As near as the whole product fits into the picture; so without --distance.")
        ->excludes(distance);
    app.add_option("--format", _format, "Of the pictures; by the output's ending or the settings without it.")
        ->check(CLI::IsMember(toStandard(QUORExportSettings::getSupportedOutputFormats()), CLI::ignore_case));
    _scene.addTo(app);
    app.add_option(
        "--name", _name, "Names below the output folder, with {" + [] {
            return PictureTemplate::names().join(QStringLiteral("}, {")).toStdString();
        }() + "}.");
    app.add_option("--jobs", _jobs, "Processes that draw at the same time.")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    app.add_flag("--resume", _resume, "Leave out pictures that are there and not older than their product.");
    app.add_option("--report", _report, "A file that gets a line of JSON for each picture.");
    app.add_flag("--worker", _isWorker)->group("");
}

ExitStatus RenderCommand::run() {
    if (_isWorker) {
        return ExitStatus(RenderWorker::run());
    }
    const ToolApplication application;
    QUORLog::Instance().logOpen(QString());
    if (_files.empty() || _output.empty()) {
        complain(_files.empty() ? QStringLiteral("which FILE?")
                                : QStringLiteral("where to? --output is missing"));
        return ExitStatus::WrongUse;
    }
    const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/quor3d-render.XXXXXX"));
    if (!folder.isValid()) {
        complain(folder.errorString());
        return ExitStatus::Found;
    }
    QString problem = _scene.applySettings(folder.path());
    RenderPlan::Options options;
    if (problem.isEmpty()) {
        problem = makeOptions(options);
    }
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitStatus::WrongUse;
    }
    if (options.output == STANDARD_OUTPUT) {
        // A picture is a whole file before anybody sees it.
        options.output = folder.filePath(QStringLiteral("picture") +
                                         QUORExportSettings::getOutputFileExtension(options.format));
    }
    const RenderPlan plan(options);
    if (!plan.getProblem().isEmpty()) {
        complain(plan.getProblem());
        return ExitStatus::WrongUse;
    }
    const ExitStatus status = draw(plan, folder.path());
    if (_output == STANDARD_OUTPUT.toStdString() && status == ExitStatus::Success) {
        return copyToStandardOutput(options.output) ? status : ExitStatus::Found;
    }
    return status;
}

/// What the command line leaves open is as in the settings.
QString RenderCommand::makeOptions(RenderPlan::Options& options) {
    QUORGeneralSettings general;
    general.loadDisplayStates(std::make_shared<QUORDisplayState>());
    general.loadViewAngles(std::make_shared<QUORViewAngle>());
    const QUORBackgroundSettings background;
    options.inputs = toList(_files);
    options.output = QString::fromStdString(_output);
    options.views = _views.empty() ? QStringList{background.getViewAngleName()} : toList(_views);
    options.states = _states.empty() ? QStringList{background.getDisplayStateName()} : toList(_states);
    options.name = QString::fromStdString(_name);
    options.resume = _resume;
    if (const QString problem = _scene.findProblem(); !problem.isEmpty()) {
        return problem;
    }
    options.size = _scene.getSize();
    options.with = _scene.getWith();
    options.format =
        _format.empty()
            ? formatOf(options.output).value_or(background.getOutputFormat())
            : QUORExportSettings::getOutputFormatFromString(QString::fromStdString(_format).toUpper());
    const auto isGiven = [this](const char* option) { return _app->count(option) > 0; };
    if (isGiven("--heading") || isGiven("--pitch") || isGiven("--distance") || _isFitted) {
        if (!_views.empty()) {
            return QStringLiteral(
                "--view has angles of its own, which --heading, --pitch, --distance and --fit replace");
        }
        options.angles = QUORPictureOrder::Angles{_heading, _pitch, {}};
        if (isGiven("--distance")) {
            options.angles->distance = 1000.0 * _distance;
        }
    }
    const QString problem = findUnknown("view angle", options.angles ? QStringList() : toList(_views),
                                        general.getViewAngleNames());
    return problem.isEmpty() ? findUnknown("display state", toList(_states), general.getDisplayStateNames())
                             : problem;
}

ExitStatus RenderCommand::draw(const RenderPlan& plan, const QString& folder) const {
    RenderReport report(QString::fromStdString(_report), _resume);
    if (!report.getError().isEmpty()) {
        complain(report.getError());
        return ExitStatus::Found;
    }
    RenderProgress progress(plan.getWanted());
    std::size_t failed = plan.getRefused().size();
    for (const RenderPlan::Refused& refused : plan.getRefused()) {
        progress.say(refused.input + QStringLiteral(": ") + refused.reason);
        report.add(refused.input, QString(), 0.0, refused.reason);
    }
    QStringList folders;
    for (const RenderTask& task : plan.getTasks()) {
        for (const RenderTask::Picture& picture : task.pictures) {
            const QString path = QFileInfo(picture.order.path).absolutePath();
            if (!folders.contains(path)) {
                folders.append(path);
                QDir().mkpath(path);
                QUORFilePublisher::removeLeftovers(path);
            }
        }
    }
    const auto take = [&](const WorkerPool::Result& result) {
        const QString& output = result.picture.order.path;
        report.add(result.task.input, output, result.seconds, result.error);
        progress.step();
        if (result.error.isEmpty()) {
            if (_output != STANDARD_OUTPUT.toStdString()) {
                progress.print(output);
            }
        } else {
            ++failed;
            progress.say(result.task.input + QStringLiteral(": ") + result.error);
        }
    };
    const int jobs = int(std::min<std::size_t>(std::size_t(_jobs), plan.getTasks().size()));
    bool isWhole = true;
    if (jobs > 0) {
        WorkerPool pool(jobs, folder, take, [&progress](const QString& line) { progress.say(line); });
        isWhole = pool.run(plan.getTasks());
    }
    return isWhole && failed == 0 ? ExitStatus::Success : ExitStatus::Found;
}
