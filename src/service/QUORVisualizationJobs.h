// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBackgroundSettings.h"
#include "QUORFileLeaf.h"
#include "QUORGeneralSettings.h"
#include "QUORMissing2D.h"

#include <QElapsedTimer>
#include <QString>

#include <atomic>
#include <memory>

class QUORDataFrame;
class QUORDataStore;
class QUOROffscreenVisualizer;

/// Renders one product file into one image, by the settings records as their owner loaded them for the job.
/// Runs on the live data thread, one job at a time; a job returns when its image is on disk or the reason why
/// there is none is in the log.
class QUORVisualizationJobs {
public:
    /// `stopRequested` outlives this object; it is looked at between two images.
    QUORVisualizationJobs(std::shared_ptr<QUORDataStore> store, QUORGeneralSettings::CPtr generalSettings,
                          QUORBackgroundSettings::CPtr backgroundSettings,
                          std::shared_ptr<QUOROffscreenVisualizer> visualizer,
                          const std::atomic<bool>& stopRequested);
    ~QUORVisualizationJobs();

    /// Renders the 3D file at that path; with `required2D` only when there is 2D data to drape.
    void visualize(const QString& path, bool required2D);
    /// Renders again every 3D file that the 2D file at that path completes.
    void visualize2D(const QString& path);

    /// The absolute path of a product's image. Whatever the names hold, it lies in the output directory.
    static QString getOutputFile(const QUORFileLeaf& leaf, const QUORBackgroundSettings& settings);

private:
    bool render(const QString& path, bool required2D);
    void cleanOutputDirectory(const QUORBackgroundSettings& settings);
    std::shared_ptr<QUORDataFrame> makeFrame(const QUORFileLeaf::CPtr& leaf, const QString& product2d) const;
    bool isWanted(const std::shared_ptr<QUORDataFrame>& frame, const QUORFileLeaf::CPtr& leaf,
                  const QString& product2d, bool required2D);

    std::shared_ptr<QUORDataStore> _dataStore;
    QString _cleanedDirectory;
    QElapsedTimer _sinceCleaning;
    QUORGeneralSettings::CPtr _generalSettings;
    QUORBackgroundSettings::CPtr _backgroundSettings;
    std::shared_ptr<QUOROffscreenVisualizer> _visualizer;
    QUORMissing2D _missing2D;
    const std::atomic<bool>& _stopRequested;
};
