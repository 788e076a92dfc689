// SPDX-License-Identifier: MIT
#include "QUORTimePanel.h"

#include "QUORDataType.h"
#include "QUORTimeList.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr int STEPS_A_SECOND = 2;
constexpr int MOST_STEPS_A_SECOND = 20;

QString nameOf(const QString& configuration) {
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        if (configuration == QLatin1String(row.configuration)) {
            return QUORDataType(row.code).getQuantityName() + QStringLiteral(" (") + configuration +
                   QLatin1Char(')');
        }
    }
    return configuration;
}

QString textOf(const QUORFileLeaf& leaf) {
    const QDateTime time = leaf.getFile()->getDataTime();
    return time.isValid() ? time.toUTC().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss 'UTC'"))
                          : leaf.getTime();
}

} // namespace

QUORTimePanel::QUORTimePanel(QUORTimeList& list, QWidget* parent)
    : QWidget(parent),
      _list(list),
      _site(new QComboBox),
      _configuration(new QComboBox),
      _times(new QListWidget),
      _slider(new QSlider(Qt::Horizontal)),
      _play(new QPushButton(tr("&Play"))),
      _speed(new QSpinBox),
      _follow(new QCheckBox(tr("&Follow the newest"))) {
    setObjectName(QStringLiteral("times"));
    _site->setObjectName(QStringLiteral("site"));
    _configuration->setObjectName(QStringLiteral("configuration"));
    _times->setObjectName(QStringLiteral("timeList"));
    _slider->setObjectName(QStringLiteral("timeSlider"));
    _play->setObjectName(QStringLiteral("play"));
    _follow->setObjectName(QStringLiteral("follow"));
    _slider->setAccessibleName(tr("Time"));
    _play->setCheckable(true);
    _speed->setRange(1, MOST_STEPS_A_SECOND);
    _speed->setValue(STEPS_A_SECOND);
    _speed->setSuffix(tr(" a second"));
    auto* back = new QPushButton(tr("&Back"));
    auto* on = new QPushButton(tr("&On"));
    auto* form = new QFormLayout;
    form->addRow(tr("&Site"), _site);
    form->addRow(tr("&Quantity"), _configuration);
    auto* player = new QHBoxLayout;
    player->addWidget(back);
    player->addWidget(_play);
    player->addWidget(on);
    player->addWidget(_speed);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(_times);
    layout->addWidget(_slider);
    layout->addLayout(player);
    layout->addWidget(_follow);
    connect(back, &QPushButton::clicked, this, [this] { _list.step(-1); });
    connect(on, &QPushButton::clicked, this, [this] { _list.step(1); });
    connect(_play, &QPushButton::toggled, this, &QUORTimePanel::setPlaying);
    connect(_speed, &QSpinBox::valueChanged, this, [this](int speed) { _player.setInterval(1000 / speed); });
    connect(_follow, &QCheckBox::toggled, &_list, &QUORTimeList::setFollowing);
    connect(_site, &QComboBox::activated, this,
            [this] { _list.choose(_site->currentText(), _list.getConfiguration()); });
    connect(_configuration, &QComboBox::activated, this,
            [this] { _list.choose(_list.getSite(), _configuration->currentData().toString()); });
    const auto choose = [this](int index) {
        if (!_isFilling) {
            _list.choose(index);
        }
    };
    connect(_times, &QListWidget::currentRowChanged, this, choose);
    connect(_slider, &QSlider::valueChanged, this, choose);
    connect(&_player, &QTimer::timeout, this, &QUORTimePanel::playOn);
    connect(&_list, &QUORTimeList::listChanged, this, &QUORTimePanel::fillLists);
    connect(&_list, &QUORTimeList::currentChanged, this, &QUORTimePanel::showCurrent);
    connect(&_list, &QUORTimeList::followingChanged, _follow, &QCheckBox::setChecked);
    _player.setInterval(1000 / STEPS_A_SECOND);
}

void QUORTimePanel::fillLists() {
    _isFilling = true;
    _site->clear();
    _site->addItems(_list.getSites());
    _site->setCurrentText(_list.getSite());
    _configuration->clear();
    for (const QString& configuration : _list.getConfigurations(_list.getSite())) {
        _configuration->addItem(nameOf(configuration), configuration);
    }
    _configuration->setCurrentIndex(_configuration->findData(_list.getConfiguration()));
    _times->clear();
    for (const QUORFileLeaf::Ptr& leaf : _list.getTimes()) {
        _times->addItem(textOf(*leaf));
    }
    _slider->setRange(0, std::max(0, int(_list.getTimes().size()) - 1));
    _isFilling = false;
    showCurrent();
}

void QUORTimePanel::showCurrent() {
    _isFilling = true;
    _times->setCurrentRow(_list.getIndex());
    _slider->setValue(std::max(0, _list.getIndex()));
    _isFilling = false;
}

void QUORTimePanel::setPlaying(bool playing) {
    if (playing == isPlaying()) {
        return;
    }
    if (playing) {
        _list.setFollowing(false);
        _player.start();
    } else {
        _player.stop();
    }
    _play->setChecked(playing);
    Q_EMIT playingChanged(playing);
}

void QUORTimePanel::playOn() {
    if (!_isBusy) {
        _list.step(1);
    }
}
