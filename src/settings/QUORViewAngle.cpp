// SPDX-License-Identifier: MIT
#include "QUORViewAngle.h"

#include "QUORLog.h"

namespace {

QString toText(const QUORPoint3D& point) {
    return QString::number(point.x) + QStringLiteral(", ") + QString::number(point.y) + QStringLiteral(", ") +
           QString::number(point.z);
}

} // namespace

void QUORViewAngle::printViewAngle() const {
    QUORLog::Instance().logDebug(QStringLiteral("ViewAngle: ") + _name);
    QUORLog::Instance().logDebug(QStringLiteral("campos=") + toText(_cameraPosition));
    QUORLog::Instance().logDebug(QStringLiteral("camdir=") + toText(_cameraDirection));
    if (_fit) {
        QUORLog::Instance().logDebug(QStringLiteral("fit=%1, %2").arg(_fit->heading).arg(_fit->pitch));
    }
}
