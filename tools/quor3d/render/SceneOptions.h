// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>
#include <QString>

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// The options of all that draws a scene by hand: size, 2D product, terrain and settings.
class SceneOptions {
public:
    void addTo(CLI::App& app);
    /// Puts copies of the user's settings, changed as asked, into the folder, and has this process read them.
    /// Empty, or what is wrong.
    QString applySettings(const QString& folder) const;
    /// Empty, or what is wrong with the size or the 2D product. After `applySettings`.
    QString findProblem();
    /// That of the settings where none was asked for.
    QSize getSize() const { return _pixels; }
    /// An absolute path, "auto" or "none".
    QString getWith() const;

private:
    std::string _size;
    std::string _with = "auto";
    std::string _terrain;
    std::vector<std::string> _set;
    QSize _pixels;
};
