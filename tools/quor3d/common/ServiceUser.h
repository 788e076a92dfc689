// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <string>

namespace CLI {
class App;
}

/// As whom a subcommand reads and writes settings: the user that `--user` names, by default this one. Root
/// stands for the background user, where there is one, because the service runs as that one.
///
/// Becoming a user is for good: its rights, groups and home directory. What cannot be done is thrown.
class ServiceUser {
public:
    void addOption(CLI::App& app);

    /// Before the first look at settings.
    void become() const;
    /// As `become`, to change a file: where nobody was named, the owner of the file that stands under that
    /// name changes it, so that root leaves no file of its own behind. The name is asked for with the home
    /// directory already changed.
    template <class FindFile>
    void becomeToChange(FindFile findFile) const {
        enterHome();
        becomeOwnerOf(findFile());
    }

    /// The name of the user of this process.
    static QString current();

private:
    QString findName() const;
    void enterHome() const;
    void becomeOwnerOf(const QString& file) const;

    std::string _named;
};
