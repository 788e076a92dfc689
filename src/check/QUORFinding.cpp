// SPDX-License-Identifier: MIT
#include "QUORFinding.h"

#include <algorithm>

QString QUORFinding::toText(Cost cost) {
    switch (cost) {
    case Cost::NoImages:
        return QStringLiteral("none");
    case Cost::Missing:
        return QStringLiteral("missing");
    case Cost::Wrong:
        return QStringLiteral("wrong");
    case Cost::Remark:
        break;
    }
    return QStringLiteral("remark");
}

void sortByCost(QUORFindings& findings) {
    std::ranges::stable_sort(findings, std::ranges::greater(), &QUORFinding::cost);
}
