// SPDX-License-Identifier: MIT
#include "QUORPresetsPanel.h"

#include <QInputDialog>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

QUORPresetsPanel::QUORPresetsPanel(QWidget* parent) : QWidget(parent), _names(new QListWidget) {
    setObjectName(QStringLiteral("presets"));
    _names->setObjectName(QStringLiteral("presetNames"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_names);
    const auto add = [&](const QString& text, bool forChosen, const std::function<void()>& action) {
        auto* button = new QPushButton(text);
        layout->addWidget(button);
        connect(button, &QPushButton::clicked, this, action);
        if (forChosen) {
            _forChosen.append(button);
        }
        return button;
    };
    add(tr("&Show"), true, [this] { Q_EMIT showAsked(getName()); });
    add(tr("Save this view &as…"), false, [this] { askName(); });
    add(tr("Re&name…"), true, [this] { askNewName(); });
    add(tr("&Delete…"), true, [this] { askRemoval(); });
    add(tr("What would the service dra&w?"), true, [this] {
        Q_EMIT pictureAsked(getName());
    })->setObjectName(QStringLiteral("servicePictureButton"));
    connect(_names, &QListWidget::currentRowChanged, this, &QUORPresetsPanel::enableButtons);
    connect(_names, &QListWidget::itemActivated, this, [this] { Q_EMIT showAsked(getName()); });
    enableButtons();
}

void QUORPresetsPanel::refresh() {
    const QString chosen = getName();
    _names->clear();
    _names->addItems(QUORViewerPresets::getNames());
    for (QListWidgetItem* item : _names->findItems(chosen, Qt::MatchExactly)) {
        _names->setCurrentItem(item);
    }
    enableButtons();
}

QString QUORPresetsPanel::getName() const {
    return _names->currentItem() != nullptr ? _names->currentItem()->text() : QString();
}

void QUORPresetsPanel::enableButtons() {
    for (QPushButton* button : std::as_const(_forChosen)) {
        button->setEnabled(_names->currentItem() != nullptr);
    }
}

QString QUORPresetsPanel::explain(QUORViewerPresets::Result result, const QString& name) {
    switch (result) {
    case QUORViewerPresets::Result::Done:
        return {};
    case QUORViewerPresets::Result::NoSuchName:
        return tr("There is no preset “%1” any more.").arg(name);
    case QUORViewerPresets::Result::NameTaken:
        return tr("There is a preset “%1” already.").arg(name);
    case QUORViewerPresets::Result::BadName:
        return tr("A preset cannot be called “%1”.").arg(name);
    case QUORViewerPresets::Result::NotStored:
        break;
    }
    return tr("The settings file could not be written; the log says why.");
}

void QUORPresetsPanel::askName() {
    bool good = false;
    const QString name = QInputDialog::getText(this, tr("Save the view"), tr("Name of the preset:"),
                                               QLineEdit::Normal, getName(), &good)
                             .trimmed();
    if (!good || name.isEmpty()) {
        return;
    }
    if (QUORViewerPresets::getNames().contains(name) &&
        QMessageBox::question(this, tr("Save the view"), tr("Replace the preset “%1”?").arg(name)) !=
            QMessageBox::Yes) {
        return;
    }
    Q_EMIT saveAsked(name);
}

void QUORPresetsPanel::askNewName() {
    bool good = false;
    const QString name = getName();
    const QString newName =
        QInputDialog::getText(this, tr("Rename the preset"), tr("New name:"), QLineEdit::Normal, name, &good)
            .trimmed();
    if (good && newName != name) {
        Q_EMIT renameAsked(name, newName);
    }
}

void QUORPresetsPanel::askRemoval() {
    const QString name = getName();
    if (QMessageBox::question(this, tr("Delete the preset"),
                              tr("Delete the preset “%1”? The service may be using it.").arg(name)) ==
        QMessageBox::Yes) {
        Q_EMIT removeAsked(name);
    }
}
