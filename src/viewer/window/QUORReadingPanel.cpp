// SPDX-License-Identifier: MIT
#include "QUORReadingPanel.h"

#include "QUORColormap.h"
#include "QUORPlot.h"

#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

constexpr int SECTION_COLUMNS = 240;

} // namespace

QUORReadingPanel::QUORReadingPanel(QWidget* parent)
    : QWidget(parent),
      _text(new QLabel),
      _tabs(new QTabWidget),
      _profile(new QUORPlot),
      _section(new QUORPlot) {
    setObjectName(QStringLiteral("reading"));
    _text->setObjectName(QStringLiteral("readingText"));
    _text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    _text->setWordWrap(true);
    _text->setText(tr("Switch reading on and drag the cross-hair through the volume."));
    _tabs->addTab(_profile, tr("&Profile"));
    _tabs->addTab(_section, tr("&Section"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_text);
    layout->addWidget(_tabs, 1);
}

void QUORReadingPanel::setScene(const QUORProductReader::CPtr& reader,
                                const QUORGeneralSettings::CPtr& settings, const QString& scale) {
    _reader = reader;
    _settings = settings;
    _scale = scale;
    showPoint();
    showLine();
}

void QUORReadingPanel::setPoint(const QUORPoint3D& place) {
    _point = place;
    showPoint();
}

void QUORReadingPanel::setLine(const QUORPoint3D& from, const QUORPoint3D& to) {
    _line = {from, to};
    _tabs->setCurrentWidget(_section);
    showLine();
}

QString QUORReadingPanel::getText() const {
    return _text->text();
}

QString QUORReadingPanel::textOf(const QUORProductReader::Value& value, const QUORFile::CPtr& file) const {
    if (!value.isInside) {
        return tr("outside");
    }
    const QUORDataType type = file->getDataType();
    return value.value ? QString::number(*value.value, 'f', 1) + QLatin1Char(' ') + type.getQuantityUnit()
                       : tr("nothing measured");
}

void QUORReadingPanel::showPoint() {
    if (!_reader || !_point) {
        return;
    }
    const QUORProductReader::Point point = _reader->read(*_point);
    QStringList lines{_settings->formatCoordinates(point.coordinate, QUORCoordinate::Both),
                      tr("Height: %1").arg(_settings->formattedSmallLength(point.height, 0)),
                      tr("%1: %2").arg(_reader->getVolume()->getDataType().getQuantityName(),
                                       textOf(point.volume, _reader->getVolume()))};
    if (const QUORFile::CPtr layer = _reader->getLayer()) {
        lines.append(tr("Below, %1 (%2): %3")
                         .arg(layer->getProduct(), layer->getDataType().getQuantityName(),
                              textOf(point.layer, layer)));
    }
    _text->setText(lines.join(QLatin1Char('\n')));
    const QUORDataType type = _reader->getVolume()->getDataType();
    const QUORColormap colormap(_scale, type, QUORColormap::Display);
    _profile->showProfile(_reader->readProfile(_point->x, _point->y), type, colormap);
}

void QUORReadingPanel::showLine() {
    if (_reader && _line) {
        const QUORDataType type = _reader->getVolume()->getDataType();
        const QUORColormap colormap(_scale, type, QUORColormap::Display);
        _section->showSection(_reader->readSection(_line->first, _line->second, SECTION_COLUMNS), type,
                              colormap);
    }
}
