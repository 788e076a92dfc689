// SPDX-License-Identifier: MIT
#include "QUORImportBatch.h"

#include "QUORImportError.h"

QUORImportBatch::QUORImportBatch(int joinSeconds, std::size_t memory, Read read, Make make, Fail fail,
                                 Progress progress)
    : _joiner(joinSeconds),
      _memory(memory),
      _read(std::move(read)),
      _make(std::move(make)),
      _fail(std::move(fail)),
      _progress(std::move(progress)) {}

void QUORImportBatch::run(const QStringList& files) {
    step(0);
    for (const QString& file : files) {
        take(file);
    }
    for (QUORVolumeJoiner::Volume& volume : _joiner.takeAll()) {
        const auto count = int(volume.files.size());
        makeJoined(std::move(volume));
        step(count);
    }
}

/// All of it is read, so that no file with damaged values takes the place of a good one.
void QUORImportBatch::take(const QString& file) {
    try {
        QUORRadarData data = _read(file);
        if (QUORVolumeJoiner::mayJoin(data)) {
            _pieces[file] = pieceOf(data);
            if (_joiner.getSize() + data.size() > _memory) {
                data.dropValues();
            }
            _joiner.add(std::move(data), file);
            step(1);
            return;
        }
        make(data, {file});
    } catch (const QUORImportError& error) {
        _fail({file}, error.getReason());
    }
    step(2);
}

QUORImportBatch::Piece QUORImportBatch::pieceOf(const QUORRadarData& data) {
    Piece piece{data.time, data.site.name, {}};
    for (const QUORRadarSweep& sweep : data.sweeps) {
        piece.sweeps.push_back({sweep.fixedAngle, {}});
        for (const QUORRadarMoment& moment : sweep.moments) {
            piece.sweeps.back().second.push_back(moment.quantity);
        }
    }
    return piece;
}

QUORRadarData QUORImportBatch::readAgain(const QString& file) const {
    QUORRadarData data = _read(file);
    if (const auto known = _pieces.constFind(file); known != _pieces.constEnd() && *known != pieceOf(data)) {
        throw QUORImportError(QStringLiteral("it has changed while others were imported"));
    }
    return data;
}

/// A file that fails now costs its own part of the volume.
void QUORImportBatch::makeJoined(QUORVolumeJoiner::Volume volume) {
    if (volume.data.hasValues) {
        make(volume.data, volume.files);
        return;
    }
    const QStringList files = volume.files;
    volume = {};
    for (const QString& file : files) {
        try {
            QUORRadarData data = readAgain(file);
            if (!volume.files.isEmpty()) {
                QUORVolumeJoiner::append(volume, std::move(data), file);
            } else {
                volume = {std::move(data), {file}};
            }
        } catch (const QUORImportError& error) {
            _fail({file}, error.getReason());
        }
    }
    if (!volume.files.isEmpty()) {
        make(volume.data, volume.files);
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
