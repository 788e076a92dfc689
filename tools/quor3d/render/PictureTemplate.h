// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

/// How pictures are named, such as "{site}_{configuration}_{time}_{view}". Values are cleaned as the service
/// cleans the names of its images, so only the template itself makes folders.
class PictureTemplate {
public:
    explicit PictureTemplate(const QString& text) : _text(text) {}

    /// Empty, or what is wrong with it: an unknown name in braces, a brace without its partner, or a way out
    /// of the output folder.
    QString findProblem() const;
    /// The path below the output folder, without the ending.
    QString expand(const QHash<QString, QString>& values) const;

    /// The names that may stand in braces.
    static QStringList names();

private:
    QString _text;
};
