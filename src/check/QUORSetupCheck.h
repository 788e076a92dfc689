// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFinding.h"
#include "QUORPresetChecks.h"
#include "QUORProductSurvey.h"

#include <QStringList>

#include <functional>
#include <memory>

class QUORBackgroundSettings;
class QUORFindingCollector;

/// Reads what the service would read, with the rights of this process, and tells what is wrong with it and
/// what lies in the product directories. Changes nothing. Used by one thread.
class QUORSetupCheck {
public:
    /// What a check needs of the layers that draw. Without a function its question is not asked.
    struct Drawing {
        /// Why nothing can be drawn on this machine; empty when something can.
        std::function<QString()> findObstacle;
        QUORPresetChecks::ScaleNames scaleNames;
    };

    explicit QUORSetupCheck(Drawing drawing = {});
    ~QUORSetupCheck();
    QUORSetupCheck(const QUORSetupCheck&) = delete;
    QUORSetupCheck& operator=(const QUORSetupCheck&) = delete;

    void run();
    /// Only what the settings files say by themselves: no directory is looked at.
    void runSettings();

    /// The most costly first.
    const QUORFindings& getFindings() const { return _findings; }
    /// The settings files that were read, user's and packaged.
    const QStringList& getFiles() const { return _files; }
    /// Null when no product directory is configured.
    const QUORProductSurvey* getSurvey() const { return _survey.get(); }
    /// As the settings name it.
    QString getOutputDirectory() const { return _outputDirectory; }
    /// Whether an image would be missing or wrong.
    bool costsImages() const;

private:
    void auditFiles(QUORFindingCollector& findings);
    void checkBackgroundFile(QUORFindingCollector& findings, const QUORBackgroundSettings& background) const;

    Drawing _drawing;
    std::unique_ptr<QUORProductSurvey> _survey;
    QStringList _files;
    QString _outputDirectory;
    QUORFindings _findings;
};
