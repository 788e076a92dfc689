// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFindingCollector.h"
#include "QUORProductSurvey.h"

/// The parts of a check that ask the system: whether directories can be listed, watched and written, and
/// whether they hold what they should.
namespace QUORDirectoryChecks {

/// Both product directories, of which either may be empty for not configured.
void checkProducts(QUORFindingCollector& findings, const QUORProductSurvey& survey, bool needs2d);
/// Whether the output directory is named by its whole path.
bool checkOutputSetting(QUORFindingCollector& findings, const QString& directory);
/// The output directory as the settings name it.
void checkOutput(QUORFindingCollector& findings, const QString& directory);
/// The tiles under the sites of a survey.
void checkTerrain(QUORFindingCollector& findings, const QString& directory, const QUORProductSurvey* survey);

} // namespace QUORDirectoryChecks
