// SPDX-License-Identifier: MIT
#include "QUORSurfacesPanel.h"

#include "QUORColormap.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <cmath>

QUORSurfacesPanel::QUORSurfacesPanel(QWidget* parent)
    : QWidget(parent),
      _rendering(new QComboBox),
      _scale(new QComboBox),
      _pages(new QStackedWidget),
      _surfacePage(new QWidget),
      _rows(new QGridLayout(_surfacePage)),
      _add(new QPushButton(tr("&Add a surface"))) {
    setObjectName(QStringLiteral("surfaces"));
    _rendering->setObjectName(QStringLiteral("rendering"));
    _rendering->addItem(tr("Surfaces"), QUORProductSettings::Surface);
    _rendering->addItem(tr("Volume"), QUORProductSettings::Volume);
    _scale->setObjectName(QStringLiteral("scale"));
    _add->setObjectName(QStringLiteral("addSurface"));
    _pages->addWidget(_surfacePage);
    _pages->addWidget(makeVolumePage());
    auto* form = new QFormLayout;
    form->addRow(tr("&Drawn as"), _rendering);
    form->addRow(tr("Colour &scale"), _scale);
    auto* save = new QPushButton(tr("&Keep for the service"));
    save->setToolTip(tr("Stores this for the product in the settings that the service reads"));
    auto* reset = new QPushButton(tr("As sto&red"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(save);
    buttons->addWidget(reset);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(_pages);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(_rendering, &QComboBox::activated, this, [this] {
        _settings.setRenderingType(QUORProductSettings::RenderingType(_rendering->currentData().toInt()));
        apply();
    });
    connect(_scale, &QComboBox::activated, this, [this] {
        _settings.setColorMapName(_scale->currentText());
        apply();
    });
    connect(_add, &QPushButton::clicked, this, &QUORSurfacesPanel::addSurface);
    connect(save, &QPushButton::clicked, this, &QUORSurfacesPanel::saveAsked);
    connect(reset, &QPushButton::clicked, this, &QUORSurfacesPanel::resetAsked);
}

QDoubleSpinBox* QUORSurfacesPanel::makeValue(double value) {
    auto* box = new QDoubleSpinBox;
    box->setKeyboardTracking(false);
    box->setDecimals(1);
    box->setRange(std::floor(std::min(value, _type.getMinDisplayValue())),
                  std::ceil(std::max(value, _type.getMaxDisplayValue())));
    box->setSuffix(QLatin1Char(' ') + _type.getQuantityUnit());
    box->setValue(value);
    return box;
}

QDoubleSpinBox* QUORSurfacesPanel::makeOpacity(double percent) {
    auto* box = new QDoubleSpinBox;
    box->setKeyboardTracking(false);
    box->setDecimals(0);
    box->setRange(0.0, 100.0);
    box->setSingleStep(5.0);
    box->setSuffix(QStringLiteral(" %"));
    box->setValue(percent);
    return box;
}

QWidget* QUORSurfacesPanel::makeVolumePage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    _volumeLow = makeValue(0.0);
    _volumeOpacityLow = makeOpacity(1.0);
    _volumeHigh = makeValue(0.0);
    _volumeOpacityHigh = makeOpacity(100.0);
    form->addRow(tr("&From"), _volumeLow);
    form->addRow(tr("Opacity there"), _volumeOpacityLow);
    form->addRow(tr("&To"), _volumeHigh);
    form->addRow(tr("Opacity there"), _volumeOpacityHigh);
    for (QDoubleSpinBox* box : {_volumeLow, _volumeOpacityLow, _volumeHigh, _volumeOpacityHigh}) {
        connect(box, &QDoubleSpinBox::valueChanged, this, &QUORSurfacesPanel::takeVolume);
    }
    return page;
}

void QUORSurfacesPanel::setSettings(const QUORProductSettings& settings, const QUORDataType& type) {
    _settings = settings;
    _type = type;
    fill();
}

void QUORSurfacesPanel::fill() {
    _isFilling = true;
    const bool surfaces = _settings.getRenderingType() != QUORProductSettings::Volume;
    _rendering->setCurrentIndex(surfaces ? 0 : 1);
    _pages->setCurrentIndex(surfaces ? 0 : 1);
    _scale->clear();
    for (const auto& scale : QUORColormap::getScalesForDataType(_type.getRawType())) {
        _scale->addItem(scale.name);
    }
    if (_scale->findText(_settings.getColorMapName()) < 0) {
        _scale->addItem(_settings.getColorMapName());
    }
    _scale->setCurrentText(_settings.getColorMapName());
    for (QDoubleSpinBox* box : {_volumeLow, _volumeHigh}) {
        box->setRange(std::min(-9999.0, std::floor(_type.getMinDisplayValue())),
                      std::max(9999.0, std::ceil(_type.getMaxDisplayValue())));
        box->setSuffix(QLatin1Char(' ') + _type.getQuantityUnit());
    }
    _volumeLow->setValue(_settings.getVolumeValueLow());
    _volumeHigh->setValue(_settings.getVolumeValueHigh());
    _volumeOpacityLow->setValue(_settings.getVolumeOpacityLow());
    _volumeOpacityHigh->setValue(_settings.getVolumeOpacityHigh());
    fillSurfaces();
    _isFilling = false;
}

void QUORSurfacesPanel::fillSurfaces() {
    while (QLayoutItem* item = _rows->takeAt(0)) {
        if (item->widget() != nullptr && item->widget() != _add) {
            item->widget()->hide();
            item->widget()->deleteLater(); // it may be the one whose signal led here
        }
        delete item;
    }
    _surfaces.clear();
    const QUORColormap colormap(_settings.getColorMapName(), _type, QUORColormap::Display);
    int row = 0;
    const auto& surfaces = _settings.getSurfaces();
    for (auto surface = surfaces.cbegin(); surface != surfaces.cend(); ++surface, ++row) {
        const std::array<int, 3> rgb = colormap.getColor(surface.key());
        auto* swatch = new QLabel;
        swatch->setFixedSize(24, 18);
        swatch->setStyleSheet(QStringLiteral("background: rgb(%1,%2,%3); border: 1px solid black")
                                  .arg(rgb[0])
                                  .arg(rgb[1])
                                  .arg(rgb[2]));
        QDoubleSpinBox* const value = makeValue(surface.key());
        QDoubleSpinBox* const opacity = makeOpacity(surface.value());
        value->setAccessibleName(tr("Value of surface %1").arg(row + 1));
        opacity->setAccessibleName(tr("Opacity of surface %1").arg(row + 1));
        value->setObjectName(QStringLiteral("value%1").arg(row));
        opacity->setObjectName(QStringLiteral("opacity%1").arg(row));
        auto* drop = new QPushButton(tr("Remove"));
        drop->setEnabled(surfaces.size() > 1);
        _rows->addWidget(swatch, row, 0);
        _rows->addWidget(value, row, 1);
        _rows->addWidget(opacity, row, 2);
        _rows->addWidget(drop, row, 3);
        _surfaces.append(std::pair{value, opacity});
        connect(value, &QDoubleSpinBox::valueChanged, this, &QUORSurfacesPanel::takeSurfaces);
        connect(opacity, &QDoubleSpinBox::valueChanged, this, &QUORSurfacesPanel::takeSurfaces);
        connect(drop, &QPushButton::clicked, this, [this, row] {
            _surfaces.removeAt(row);
            takeSurfaces();
        });
    }
    _rows->addWidget(_add, row, 1, 1, 2);
    _add->setEnabled(surfaces.size() < QUORProductSettings::MAXIMUM_SURFACES);
}

void QUORSurfacesPanel::takeSurfaces() {
    if (_isFilling) {
        return;
    }
    QUORProductSettings::SurfaceParContainer surfaces;
    for (const auto& [value, opacity] : _surfaces) {
        surfaces[value->value()] = int(opacity->value());
    }
    _settings.setSurfaces(surfaces);
    apply();
}

void QUORSurfacesPanel::takeVolume() {
    if (!_isFilling) {
        _settings.setVolumeLow(_volumeLow->value(), _volumeOpacityLow->value());
        _settings.setVolumeHigh(_volumeHigh->value(), _volumeOpacityHigh->value());
        apply();
    }
}

// Above the highest, half way to the end of the range.
void QUORSurfacesPanel::addSurface() {
    auto surfaces = _settings.getSurfaces();
    const double highest = surfaces.isEmpty() ? _type.getMinDisplayValue() : surfaces.lastKey();
    surfaces[std::round(0.5 * (highest + _type.getMaxDisplayValue()))] = 100;
    _settings.setSurfaces(surfaces);
    apply();
}

void QUORSurfacesPanel::apply() {
    fill();
    Q_EMIT edited(_settings);
}
