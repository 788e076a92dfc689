// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

/// One thing that is wrong with a setup, as a check tells it.
struct QUORFinding {
    /// What it costs, the least first.
    enum class Cost {
        Remark,   ///< every image is as it was meant
        Wrong,    ///< images show something else than was meant
        Missing,  ///< some images are missing
        NoImages, ///< there is none at all
    };

    Cost cost = Cost::Remark;
    /// Stable, for scripts: such as "unknown-key".
    QString code;
    /// The file or directory that it is about; may be empty.
    QString file;
    int line = 0; ///< from 1; 0 for none
    /// With its group, such as "GENERAL/data3d"; may be empty.
    QString key;
    QString problem;
    /// What to do, or to write instead; may be empty.
    QString advice;

    /// "remark", "wrong", "missing" or "none": how the costs are named outside.
    static QString toText(Cost cost);
};

using QUORFindings = QList<QUORFinding>;

/// The most costly first; what costs the same stays in its order.
void sortByCost(QUORFindings& findings);
