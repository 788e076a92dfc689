// SPDX-License-Identifier: MIT
#include "QUORImportBatch.h"

#include "QUORImportError.h"

#include <optional>

QUORImportBatch::QUORImportBatch(int joinSeconds, Read read, Make make, Fail fail, Progress progress)
    : _joiner(joinSeconds),
      _read(std::move(read)),
      _make(std::move(make)),
      _fail(std::move(fail)),
      _progress(std::move(progress)) {}

void QUORImportBatch::run(const QStringList& files) {
    step(0);
    if (files.size() == 1) {
        makeJoined(files); // nothing to be joined with
        step(2);
        return;
    }
    for (const QString& file : files) {
        look(file);
    }
    for (const QUORVolumeJoiner::Volume& outline : _joiner.takeAll()) {
        makeJoined(outline.files);
        step(int(outline.files.size()));
    }
}

void QUORImportBatch::look(const QString& file) {
    try {
        QUORRadarData data = _read(file, QUORReadExtent::Outline);
        if (QUORVolumeJoiner::mayJoin(data)) {
            keepOutline(std::move(data), file);
            step(1);
            return;
        }
        make(data.isOutline ? _read(file, QUORReadExtent::Whole) : data, {file});
    } catch (const QUORImportError& error) {
        _fail({file}, error.getReason());
    }
    step(2);
}

QUORImportBatch::Piece QUORImportBatch::pieceOf(const QUORRadarData& data) {
    return {data.time, data.site.name, data.sweeps.size()};
}

/// Only what joining asks for: there may be thousands.
void QUORImportBatch::keepOutline(QUORRadarData data, const QString& file) {
    _pieces[file] = pieceOf(data);
    QUORRadarData outline;
    outline.site = data.site;
    outline.time = data.time;
    outline.isPiece = data.isPiece;
    outline.isOutline = true;
    for (const QUORRadarSweep& sweep : data.sweeps) {
        QUORRadarSweep& kept = outline.sweeps.emplace_back();
        kept.fixedAngle = sweep.fixedAngle;
        for (const QUORRadarMoment& moment : sweep.moments) {
            kept.moments.emplace_back().quantity = moment.quantity;
        }
    }
    _joiner.add(std::move(outline), file);
}

QUORRadarData QUORImportBatch::readPiece(const QString& file) const {
    QUORRadarData data = _read(file, QUORReadExtent::Whole);
    if (const auto known = _pieces.constFind(file); known != _pieces.constEnd() && *known != pieceOf(data)) {
        throw QUORImportError(QStringLiteral("it has changed while others were imported"));
    }
    return data;
}

/// A file that fails costs its own part of the volume.
void QUORImportBatch::makeJoined(const QStringList& files) {
    std::optional<QUORVolumeJoiner::Volume> volume;
    for (const QString& file : files) {
        try {
            QUORRadarData data = readPiece(file);
            if (volume) {
                QUORVolumeJoiner::append(*volume, std::move(data), file);
            } else {
                volume = {std::move(data), {file}};
            }
        } catch (const QUORImportError& error) {
            _fail({file}, error.getReason());
        }
    }
    if (volume) {
        make(volume->data, volume->files);
    }
}

void QUORImportBatch::make(const QUORRadarData& data, const QStringList& files) {
    try {
        _make(data, files);
    } catch (const QUORImportError& error) {
        _fail(files, error.getReason());
    }
}

void QUORImportBatch::step(int steps) {
    _steps += steps;
    _progress(_steps / 2);
}
