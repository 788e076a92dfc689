// SPDX-License-Identifier: MIT
#pragma once

#include "QUORViewerPresets.h"

#include <QWidget>

#include <functional>

class QListWidget;
class QPushButton;

/// The presets that the service reads: shown, saved, renamed and deleted.
class QUORPresetsPanel : public QWidget {
    Q_OBJECT

public:
    explicit QUORPresetsPanel(QWidget* parent = nullptr);

    /// Reads the names again.
    void refresh();
    /// Of the chosen one; empty without one.
    QString getName() const;
    /// What the user is told when it was not done; empty when it was.
    static QString explain(QUORViewerPresets::Result result, const QString& name);

Q_SIGNALS:
    void showAsked(const QString& name);
    /// Under a name that the user has given or confirmed.
    void saveAsked(const QString& name);
    void renameAsked(const QString& name, const QString& newName);
    void removeAsked(const QString& name);
    void pictureAsked(const QString& name);

private:
    void askName();
    void askNewName();
    void askRemoval();
    void enableButtons();

    QListWidget* _names;
    QList<QPushButton*> _forChosen;
};
