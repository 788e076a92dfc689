// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBackgroundSettings.h"
#include "QUORFileLeaf.h"
#include "QUORGeneralSettings.h"
#include "QUORMissing2D.h"
#include "QUORPictureOrder.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QUORDataFrame;
class QUORDataStore;
class QUOROffscreenVisualizer;

/// Renders one product file into one image, by the settings records as their owner loaded them for the job.
/// Runs on the live data thread, one job at a time; a job returns when its image is on disk or the reason why
/// there is none is in the log.
class QUORVisualizationJobs {
public:
    QUORVisualizationJobs(std::shared_ptr<QUORDataStore> store, QUORGeneralSettings::CPtr generalSettings,
                          QUORBackgroundSettings::CPtr backgroundSettings,
                          std::shared_ptr<QUOROffscreenVisualizer> visualizer);
    ~QUORVisualizationJobs();

    /// Whether an image needs 2D data to drape.
    enum Need2D {
        AsShown,  ///< where the display state shows it and a 2D product is wanted
        Required, ///< always
        Waived    ///< not any more: it has not come in time
    };
    enum Result {
        Visualized,
        NotWritten, ///< the output did not take the image
        Missing2D,  ///< not drawn before its 2D product comes
        Ignored     ///< for good
    };
    /// Renders the 3D file at that path.
    Result visualize(const QString& path, Need2D need);
    /// The 3D files that the 2D file at that path completes, to be rendered again.
    QStringList findCompleted(const QString& path);
    /// Whether the output takes a new file for this product's image, and has some room for it.
    bool canWrite(const QUORFileLeaf& leaf) const;

    /// The absolute path of a product's image. Whatever the names hold, it lies in the output directory.
    static QString getOutputFile(const QUORFileLeaf& leaf, const QUORBackgroundSettings& settings);

    /// One for each picture that the settings want of this product. The first has that path; the names of
    /// further ones go on with view, display state and size, as far as they differ from the first one's.
    static std::vector<QUORPictureOrder> getOrders(const QUORFileLeaf& leaf,
                                                   const QUORBackgroundSettings& settings);

    /// A frame that asks for that 3D product and what lies around it, not loaded yet and without a 2D
    /// product.
    static std::shared_ptr<QUORDataFrame> prepareFrame(std::shared_ptr<QUORDataStore> store,
                                                       const QUORFileLeaf::CPtr& leaf,
                                                       const QUORGeneralSettings& settings);

private:
    Result render(const QString& path, Need2D need);
    Result drawFurther(const std::shared_ptr<QUORDataFrame>& frame, std::vector<QUORPictureOrder> orders,
                       Need2D need, Result first);
    Result draw(const std::shared_ptr<QUORDataFrame>& frame, const std::vector<QUORPictureOrder>& orders);
    void cleanOutputDirectory(const QUORBackgroundSettings& settings);
    std::shared_ptr<QUORDataFrame> makeFrame(const QUORFileLeaf::CPtr& leaf, const QString& product2d) const;
    bool isWanted(const std::shared_ptr<QUORDataFrame>& frame, const QUORFileLeaf::CPtr& leaf,
                  const QString& product2d, Need2D need);

    std::shared_ptr<QUORDataStore> _dataStore;
    QString _cleanedDirectory;
    QElapsedTimer _sinceCleaning;
    QUORGeneralSettings::CPtr _generalSettings;
    QUORBackgroundSettings::CPtr _backgroundSettings;
    std::shared_ptr<QUOROffscreenVisualizer> _visualizer;
    QUORMissing2D _missing2D;
};
