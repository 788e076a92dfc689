// SPDX-License-Identifier: MIT
#pragma once

#include "TestProduct.h"

#include <QString>

/// The folders that a service under test works with, and the settings that name them.
class ServiceFolders {
public:
    /// Makes the folders "3d", "2d", "geo" and "out" below the root.
    explicit ServiceFolders(const QString& root);

    QString path(const QString& name) const { return _root + QLatin1Char('/') + name; }
    /// The text of the main settings file; `more` goes behind its general group.
    QByteArray mainSettings(const QByteArray& more = {}) const;
    /// The text of a background settings file for small PNG images; `more` goes into its only group.
    QByteArray backgroundSettings(const QByteArray& more = {}) const;

    /// The file appears at once under its name, as a careful producer publishes it; returns its path.
    QString drop(const TestProduct& product, const QString& folder = QStringLiteral("3d")) const;
    QString image(const QString& name) const { return path(QStringLiteral("out/") + name); }

    /// A volume with a core that is worth a surface, so many minutes after the first.
    static TestProduct storm(int minutes = 0);
    static TestProduct rain(int minutes = 0);

private:
    QString _root;
};
