// SPDX-License-Identifier: MIT
#pragma once

#include "PictureTemplate.h"
#include "RenderTask.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <vector>

/// Which pictures a command line asks for, and where each one goes. Says what is wrong before anything is
/// drawn.
class RenderPlan {
public:
    struct Options {
        QStringList inputs;
        /// A folder, one file, or "-".
        QString output;
        QStringList views;
        QStringList states;
        std::optional<QUORPictureOrder::Angles> angles;
        QSize size;
        QUORExportSettings::OutputFormat format = QUORExportSettings::Tiff;
        QString with;
        /// Empty for the service's names, with what distinguishes several pictures behind them.
        QString name;
        /// Leaves out what is there and not older than its product.
        bool resume = false;
    };
    /// A file of which no picture can be made, and why.
    struct Refused {
        QString input;
        QString reason;
    };

    explicit RenderPlan(const Options& options);

    /// Empty, or why the command line makes no sense.
    QString getProblem() const { return _problem; }
    const std::vector<RenderTask>& getTasks() const { return _tasks; }
    const std::vector<Refused>& getRefused() const { return _refused; }
    /// Pictures that are to be drawn, and that stand already.
    std::size_t getWanted() const { return _wanted; }
    std::size_t getSkipped() const { return _skipped; }

private:
    void add(const Options& options, const PictureTemplate& name, const QString& input);
    QString nameFor(const Options& options) const;
    QString place(const Options& options, const QString& name) const;
    static bool isCurrent(const Options& options, const QString& output, const QString& input);

    QString _problem;
    std::vector<RenderTask> _tasks;
    std::vector<Refused> _refused;
    QHash<QString, QString> _inputOf; ///< by output
    std::size_t _wanted = 0;
    std::size_t _skipped = 0;
    bool _isSingleFile = false;
};
