// SPDX-License-Identifier: MIT
#pragma once

#include "QUORColorScales.h"

#include <QImage>

/// A colour scale as a picture: a bar of its colours from the lowest seam at the bottom to the highest, with
/// the values and the unit beside it.
namespace ScalePicture {

/// The caller has a QGuiApplication.
QImage draw(const QUORColorScales::Scale& scale);

} // namespace ScalePicture
