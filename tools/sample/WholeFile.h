// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Makes a file, and its folder where that is missing. The file appears whole under its name, or not at
/// all. An empty text, or the path and the reason.
QString writeWholeFile(const QString& path, const QByteArray& bytes);
