// SPDX-License-Identifier: MIT
#include "TextTable.h"

#include <algorithm>
#include <iostream>

void TextTable::print(const QString& indent) const {
    QList<qsizetype> widths;
    for (const QStringList& row : _rows) {
        if (row.size() == 1) {
            continue; // a line of its own
        }
        widths.resize(std::max(widths.size(), row.size()));
        for (qsizetype i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths.at(i), row.at(i).size());
        }
    }
    for (const QStringList& row : _rows) {
        QString line = indent;
        for (qsizetype i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            line += last ? row.at(i) : row.at(i).leftJustified(widths.at(i) + 2);
        }
        std::cout << line.toStdString() << '\n';
    }
}
