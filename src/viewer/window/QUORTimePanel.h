// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QListWidget;
class QPushButton;
class QSlider;
class QSpinBox;
class QUORTimeList;

/// Sites, configurations and times to choose from, and a player of the times.
class QUORTimePanel : public QWidget {
    Q_OBJECT

public:
    /// The list must outlive the panel.
    explicit QUORTimePanel(QUORTimeList& list, QWidget* parent = nullptr);

    bool isPlaying() const { return _player.isActive(); }
    void setPlaying(bool playing);
    /// While a scene is being built the player waits for it.
    void setBusy(bool busy) { _isBusy = busy; }

Q_SIGNALS:
    void playingChanged(bool playing);

private:
    void fillLists();
    void showCurrent();
    void playOn();

    QUORTimeList& _list;
    QComboBox* _site;
    QComboBox* _configuration;
    QListWidget* _times;
    QSlider* _slider;
    QPushButton* _play;
    QSpinBox* _speed;
    QCheckBox* _follow;
    QTimer _player;
    bool _isBusy = false;
    bool _isFilling = false;
};
