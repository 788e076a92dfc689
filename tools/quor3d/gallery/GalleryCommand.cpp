// SPDX-License-Identifier: MIT
#include "GalleryCommand.h"

#include "FolderWait.h"
#include "Gallery.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <QDir>

#include <iostream>
#include <limits>

namespace {

/// Between two looks at the lists while copies are made, and between two looks at a folder that tells
/// nothing.
constexpr std::chrono::seconds SLICE{2};
constexpr std::chrono::seconds LOOK{10};

void complain(const QString& text) {
    std::cerr << "quor3d gallery: " << text.toStdString() << '\n';
}

} // namespace

std::string GalleryCommand::examples() const {
    return "  quor3d gallery /data/images                     index.html beside the pictures\n"
           "  quor3d gallery /data/images --watch             and follow what the service writes\n"
           "  quor3d gallery /data/images -o /srv/www/radar   the page elsewhere\n";
}

void GalleryCommand::addOptions(CLI::App& app) {
    app.add_option("DIR", _pictures, "The folder of the pictures.")->required();
    app.add_option(
        "-o,--output", _page,
        "The folder of the page, made where it is missing; that of the pictures without it. A web server "
        "must hand out both.");
    app.add_flag("--watch", _watch, "Go on until SIGINT or SIGTERM and follow the folder.");
    app.add_option("--last", _most, "Pictures of each series that are shown, the newest; 0 for all.")
        ->capture_default_str();
    app.add_option("--copies", _copies, "Format of the copies of TIFF pictures: webp (small) or png (exact).")
        ->check(CLI::IsMember({"webp", "png"}))
        ->capture_default_str();
    app.add_option("--title", _title, "Heading of the page.")->capture_default_str();
    app.add_option("--refresh", _refresh, "Seconds between two looks of the page for new pictures.")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
}

ExitStatus GalleryCommand::run() {
    const ToolApplication application;
    Gallery::Options options;
    options.pictures = QString::fromStdString(_pictures);
    options.page = _page.empty() ? options.pictures : QString::fromStdString(_page);
    options.title = QString::fromStdString(_title);
    options.copies = QString::fromStdString(_copies);
    options.most = _most == 0 ? std::numeric_limits<std::size_t>::max() : _most;
    options.refresh = _refresh;
    if (!_watch && !QDir(options.pictures).exists()) {
        complain(options.pictures + QStringLiteral(": there is no such folder"));
        return ExitStatus::Found;
    }
    if (!PictureCopier::canWrite(options.copies)) {
        complain(options.copies +
                 QStringLiteral(" cannot be written here: install qt6-image-formats-plugins, or "
                                "choose another format with --copies"));
        return ExitStatus::Found;
    }
    Gallery gallery(options);
    if (const QString error = gallery.writePage(); !error.isEmpty()) {
        complain(error);
        return ExitStatus::Found;
    }
    std::cout << QDir(options.page).absoluteFilePath(QStringLiteral("index.html")).toStdString() << std::endl;
    return _watch ? follow(gallery) : writeOnce(gallery);
}

ExitStatus GalleryCommand::writeOnce(Gallery& gallery) const {
    QString error;
    do {
        error = gallery.update(SLICE);
        if (gallery.isBehind()) {
            std::cerr << gallery.getShownPictures() << " pictures so far\n";
        }
    } while (error.isEmpty() && gallery.isBehind());
    if (!error.isEmpty()) {
        complain(error);
    }
    return error.isEmpty() && gallery.getFailures() == 0 ? ExitStatus::Success : ExitStatus::Found;
}

ExitStatus GalleryCommand::follow(Gallery& gallery) const {
    FolderWait folder(QString::fromStdString(_pictures));
    QString lastError;
    for (;;) {
        const QString error = gallery.update(SLICE);
        if (error != lastError) {
            complain(error.isEmpty() ? QStringLiteral("the pictures can be followed again") : error);
            lastError = error;
        }
        const auto time = gallery.isBehind() ? std::chrono::seconds(0) : LOOK;
        if (folder.wait(time) == FolderWait::Reason::AskedToEnd) {
            return ExitStatus::Success;
        }
    }
}
