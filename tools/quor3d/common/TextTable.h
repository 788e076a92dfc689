// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Columns of text for a terminal: each as wide as its widest cell, the last as long as it is. A row of one
/// cell is a line between the others.
class TextTable {
public:
    void add(const QStringList& row) { _rows.append(row); }
    bool isEmpty() const { return _rows.isEmpty(); }
    /// To standard output, every line behind the indent.
    void print(const QString& indent = {}) const;

private:
    QList<QStringList> _rows;
};
