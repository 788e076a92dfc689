// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGeneralSettings.h"
#include "QUORProductReader.h"

#include <QWidget>

#include <optional>

class QLabel;
class QTabWidget;
class QUORPlot;

/// The values at the cross-hair, the profile over it, and the section along the line that was drawn. They
/// follow the scene.
class QUORReadingPanel : public QWidget {
    Q_OBJECT

public:
    explicit QUORReadingPanel(QWidget* parent = nullptr);

    void setScene(const QUORProductReader::CPtr& reader, const QUORGeneralSettings::CPtr& settings,
                  const QString& scale);
    /// Scene metres at a vertical scale of 1.
    void setPoint(const QUORPoint3D& place);
    void setLine(const QUORPoint3D& from, const QUORPoint3D& to);
    /// The lines as they are shown.
    QString getText() const;

private:
    void showPoint();
    void showLine();
    QString textOf(const QUORProductReader::Value& value, const QUORFile::CPtr& file) const;

    QUORProductReader::CPtr _reader;
    QUORGeneralSettings::CPtr _settings;
    QString _scale;
    std::optional<QUORPoint3D> _point;
    std::optional<std::pair<QUORPoint3D, QUORPoint3D>> _line;
    QLabel* _text;
    QTabWidget* _tabs;
    QUORPlot* _profile;
    QUORPlot* _section;
};
