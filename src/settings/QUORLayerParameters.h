// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>

/// What one visual element needs to build its layer; this class itself carries nothing, for groups and for
/// layers without data. Copying a record copies its pointers, never the objects behind them, and a new
/// projection or set counts as a change even when its content equals the old one. No locks: a record
/// belongs to one thread, and a layer keeps a copy of its own.
class QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParameters>;
    using CPtr = std::shared_ptr<const QUORLayerParameters>;

    QUORLayerParameters() = default;
    QUORLayerParameters(const QUORLayerParameters&) = default;
    QUORLayerParameters& operator=(const QUORLayerParameters&) = default;
    virtual ~QUORLayerParameters() = default;

    /// False against a record of another class.
    virtual bool hasChanged(const QUORLayerParameters& other) const;
    /// Class name and fields to the log, at debug level.
    virtual void printDebug() const;

protected:
    static void printClass(const char* name);
    static void printField(const char* label, const QString& value);
    static void printField(const char* label, double value);
    static void printField(const char* label, const void* object);
};
