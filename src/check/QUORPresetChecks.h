// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFindingCollector.h"
#include "QUORProductSurvey.h"

#include <functional>
#include <memory>

class QUORBackgroundSettings;
class QUORDisplayState;
class QUORGeneralSettings;

/// The parts of a check that look names up: presets, colour scales and 2D products, and what the settings
/// of each product would show.
namespace QUORPresetChecks {

/// The names of the colour scales for a data type, by its raw code.
using ScaleNames = std::function<QStringList(int rawType)>;

/// The state that the background settings name, or the built-in one with a finding. Presets are loaded
/// into the general settings.
std::shared_ptr<QUORDisplayState> checkDisplayState(QUORFindingCollector& findings,
                                                    QUORGeneralSettings& general,
                                                    const QUORBackgroundSettings& background);
void checkViewAngle(QUORFindingCollector& findings, QUORGeneralSettings& general,
                    const QUORBackgroundSettings& background);
/// That the further pictures of a scene name presets that exist.
void checkFurtherViews(QUORFindingCollector& findings, QUORGeneralSettings& general,
                       const QUORBackgroundSettings& background);
/// Every product group of the settings, and those of the products that were found. The survey may be null;
/// without `scaleNames` no scale is looked up.
void checkProducts(QUORFindingCollector& findings, const QUORProductSurvey* survey,
                   const ScaleNames& scaleNames);
/// The numbers that the groups of the colours file refer to each other by.
void checkColors(QUORFindingCollector& findings);
/// How the volumes find their 2D products; wait2d: after how many seconds they do without, negative for
/// never.
void checkPairing(QUORFindingCollector& findings, const QUORProductSurvey& survey, int wait2d);

} // namespace QUORPresetChecks
