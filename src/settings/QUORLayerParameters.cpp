// SPDX-License-Identifier: MIT
#include "QUORLayerParameters.h"

#include "QUORLog.h"

bool QUORLayerParameters::hasChanged(const QUORLayerParameters& /*other*/) const {
    return false;
}

void QUORLayerParameters::printDebug() const {
    QUORLog::Instance().logDebug(QStringLiteral("QUORLayerParameters: (no data)"));
}

void QUORLayerParameters::printClass(const char* name) {
    QUORLog::Instance().logDebug(QString::fromLatin1(name));
}

void QUORLayerParameters::printField(const char* label, const QString& value) {
    QUORLog::Instance().logDebug(QStringLiteral("  ") + QLatin1String(label) + QStringLiteral("=") + value);
}

void QUORLayerParameters::printField(const char* label, double value) {
    printField(label, QString::number(value, 'g', 6));
}

void QUORLayerParameters::printField(const char* label, const void* object) {
    printField(label, object == nullptr ? QStringLiteral("none")
                                        : QStringLiteral("0x") + QString::number(quintptr(object), 16));
}
