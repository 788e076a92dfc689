// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

class QUORNetcdfGroup;

/// Times as netCDF files have them.
namespace QUORCfTime {

/// "2020-03-12T00:30:09Z" and its relatives, also inside a longer text; UTC. Invalid when there is none.
QDateTime parse(const QString& text);
/// The first value of a variable whose units are "seconds since ...", or minutes, hours, days.
QDateTime first(const QUORNetcdfGroup& group, const char* variable);

} // namespace QUORCfTime
