// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>

/// Classic netCDF files (CDF-1, CDF-2, CDF-5), of which the library reads zeros where a file has been cut
/// off.
namespace QUORClassicNetcdf {

bool recognises(QByteArrayView content);
/// Throws a QUORImportError when the content ends before the data that its header announces. After the file
/// format descriptions of the netCDF user's guide.
void demandWhole(QByteArrayView content);

} // namespace QUORClassicNetcdf
