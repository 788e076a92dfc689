// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What an image may be called.
namespace QUORImageName {

/// A name of one file, neither hidden nor a way out of its directory: "/" and control characters become "_".
QString clean(QString name);

} // namespace QUORImageName
