// SPDX-License-Identifier: MIT
#include "RenderPlan.h"

#include "QUORFile.h"

#include <QDir>
#include <QFileInfo>

namespace {

const QString SERVICE_NAME = QStringLiteral("{site}_{configuration}_{time}");

QString anglesName(const QUORPictureOrder::Angles& angles) {
    QString name = QStringLiteral("%1-%2").arg(angles.heading, 0, 'f', 0).arg(angles.pitch, 0, 'f', 0);
    if (angles.distance) {
        name += QStringLiteral("-%1km").arg(*angles.distance / 1000.0, 0, 'f', 0);
    }
    return name;
}

QString findReason(const QUORFile& file) {
    switch (file.getStatus()) {
    case QUORFile::Valid:
        return file.getConfiguration().isEmpty() || file.getDimensions() < 3
                   ? QStringLiteral("not a 3D product")
                   : QString();
    case QUORFile::NotReadable:
        return QStringLiteral("it does not exist or cannot be read");
    case QUORFile::Incomplete:
        return QStringLiteral("it is cut short");
    case QUORFile::NoData:
        return QStringLiteral("it is empty or cut short");
    case QUORFile::CannotOpen:
        return QStringLiteral("it is no regular file or may not be read");
    default:
        return QStringLiteral("it is no product file");
    }
}

} // namespace

RenderPlan::RenderPlan(const Options& options) {
    const std::size_t combinations =
        std::size_t(options.angles ? 1 : options.views.size()) * std::size_t(options.states.size());
    const bool isFolder = options.output.endsWith(QLatin1Char('/')) || QFileInfo(options.output).isDir() ||
                          QFileInfo(options.output).suffix().isEmpty();
    _isSingleFile = options.output == QStringLiteral("-") || (!isFolder && options.name.isEmpty());
    if (_isSingleFile && (options.inputs.size() != 1 || combinations != 1)) {
        _problem = options.output + QStringLiteral(": several pictures need a folder as --output");
        return;
    }
    const PictureTemplate name(options.name.isEmpty() ? nameFor(options) : options.name);
    if (const QString problem = name.findProblem(); !problem.isEmpty()) {
        _problem = options.name + QStringLiteral(": ") + problem;
        return;
    }
    for (const QString& input : options.inputs) {
        add(options, name, QFileInfo(input).absoluteFilePath());
        if (!_problem.isEmpty()) {
            return;
        }
    }
}

/// The service's name, and what distinguishes several pictures of one scene behind it.
QString RenderPlan::nameFor(const Options& options) const {
    QString name = SERVICE_NAME;
    if (options.angles || options.views.size() > 1) {
        name += QStringLiteral("_{view}");
    }
    if (options.states.size() > 1) {
        name += QStringLiteral("_{state}");
    }
    return name;
}

QString RenderPlan::place(const Options& options, const QString& name) const {
    if (_isSingleFile) {
        return QFileInfo(options.output).absoluteFilePath();
    }
    return QDir(options.output).absolutePath() + QLatin1Char('/') + name +
           QUORExportSettings::getOutputFileExtension(options.format);
}

bool RenderPlan::isCurrent(const Options& options, const QString& output, const QString& input) {
    const QFileInfo picture(output);
    const auto isNewer = [&](const QString& path) {
        return picture.lastModified() >= QFileInfo(path).lastModified();
    };
    const bool with2d = options.with != QStringLiteral("auto") && options.with != QStringLiteral("none");
    return picture.isFile() && picture.size() > 0 && isNewer(input) && (!with2d || isNewer(options.with));
}

void RenderPlan::add(const Options& options, const PictureTemplate& name, const QString& input) {
    const QUORFile file(input);
    if (const QString reason = findReason(file); !reason.isEmpty()) {
        _refused.push_back({input, reason});
        return;
    }
    RenderTask task{input, options.with, {}};
    for (const QString& state : options.states) {
        for (const QString& view :
             options.angles ? QStringList{anglesName(*options.angles)} : options.views) {
            RenderTask::Picture picture;
            picture.state = state;
            QUORPictureOrder& order = picture.order;
            order.viewAngle = options.angles ? QString() : view;
            order.angles = options.angles;
            order.width = options.size.width();
            order.height = options.size.height();
            order.format = options.format;
            order.path = place(
                options,
                name.expand({{QStringLiteral("site"), file.getSite()},
                             {QStringLiteral("configuration"), file.getConfiguration()},
                             {QStringLiteral("product"), file.getProduct()},
                             {QStringLiteral("time"), file.getTime()},
                             {QStringLiteral("view"), view},
                             {QStringLiteral("state"), state},
                             {QStringLiteral("size"),
                              QStringLiteral("%1x%2").arg(options.size.width()).arg(options.size.height())},
                             {QStringLiteral("name"), file.getBaseName()}}));
            if (_inputOf.contains(order.path)) {
                _problem = order.path + QStringLiteral(": two pictures would have this name, of ") +
                           _inputOf[order.path] + QStringLiteral(" and of ") + input +
                           QStringLiteral("; distinguish them with --name");
                return;
            }
            _inputOf.insert(order.path, input);
            if (options.resume && isCurrent(options, order.path, input)) {
                ++_skipped;
            } else {
                task.pictures.push_back(picture);
            }
        }
    }
    _wanted += task.pictures.size();
    if (!task.pictures.empty()) {
        _tasks.push_back(std::move(task));
    }
}
