// SPDX-License-Identifier: MIT
#include "PictureName.h"

#include <QRegularExpression>

std::optional<PictureName> PictureName::parse(const QString& fileName) {
    // The first group of twelve digits is the time, whatever a view is called.
    static const QRegularExpression form(
        QStringLiteral("^(.+?)_([^_]+)_([0-9]{12})(?:_(.+))?\\.(?:tiff?|png|jpe?g|webp)$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(fileName);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return PictureName{match.captured(1), match.captured(2), match.captured(3), match.captured(4)};
}
