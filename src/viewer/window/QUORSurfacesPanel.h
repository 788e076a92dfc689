// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataType.h"
#include "QUORProductSettings.h"

#include <QWidget>

#include <memory>

class QComboBox;
class QDoubleSpinBox;
class QGridLayout;
class QPushButton;
class QStackedWidget;

/// How the 3D product is drawn: as surfaces or as a volume, with which colour scale, which values and
/// opacities. Beside each value stands the colour that the scale gives it.
class QUORSurfacesPanel : public QWidget {
    Q_OBJECT

public:
    explicit QUORSurfacesPanel(QWidget* parent = nullptr);

    /// Emits nothing.
    void setSettings(const QUORProductSettings& settings, const QUORDataType& type);

Q_SIGNALS:
    void edited(const QUORProductSettings& settings);
    /// To the file that the service reads.
    void saveAsked();
    void resetAsked();

private:
    QWidget* makeVolumePage();
    QDoubleSpinBox* makeValue(double value);
    QDoubleSpinBox* makeOpacity(double percent);
    void fill();
    void fillSurfaces();
    void takeSurfaces();
    void takeVolume();
    void addSurface();
    void apply();

    QUORProductSettings _settings;
    QUORDataType _type{-1};
    bool _isFilling = false;
    QComboBox* _rendering;
    QComboBox* _scale;
    QStackedWidget* _pages;
    QWidget* _surfacePage;
    QGridLayout* _rows;
    QPushButton* _add;
    QDoubleSpinBox* _volumeLow;
    QDoubleSpinBox* _volumeOpacityLow;
    QDoubleSpinBox* _volumeHigh;
    QDoubleSpinBox* _volumeOpacityHigh;
    QList<std::pair<QDoubleSpinBox*, QDoubleSpinBox*>> _surfaces;
};
