// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFile.h"
#include "QUORGridStatistics.h"

#include <QJsonObject>
#include <QString>

#include <memory>
#include <optional>

class QUOR2DTop;
class TextTable;

/// One product file in words and units, for people and for scripts.
class ProductReport {
public:
    /// Reads the file's header, and its grid when one can be built.
    explicit ProductReport(const QString& path);

    /// Looks for the 2D product that a volume would be drawn with. Of no product file, nothing is found.
    void pair(const QUOR2DTop& top, const QString& product2d, int timeWindow);

    /// Whether it can be drawn: a complete product with a grid.
    bool isGood() const { return _file->isValid() && _error.isEmpty(); }
    void print() const;
    QJsonObject toJson() const;

private:
    QString describeStatus() const;
    void addGrid(TextTable& table) const;
    void addStatistics(TextTable& table) const;
    void printHistogram() const;

    std::shared_ptr<const QUORFile> _file;
    QString _error;
    std::optional<QUORGridStatistics> _statistics;
    bool _isPaired = false;
    QString _product2d;
    QString _file2d;
    QString _reason;
};
