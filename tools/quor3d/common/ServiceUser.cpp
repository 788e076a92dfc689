// SPDX-License-Identifier: MIT
#include "ServiceUser.h"

#include "QUORBackgroundSettings.h"
#include "QUORSystem.h"

#include <CLI/CLI.hpp>

#include <QFile>
#include <QSettings>

#include <grp.h>
#include <optional>
#include <pwd.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

struct Account {
    QString name;
    QString home;
    uid_t uid = 0;
    gid_t gid = 0;
};

template <class Find>
std::optional<Account> findAccount(Find find) {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (find(&entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
        return std::nullopt;
    }
    return Account{QString::fromLocal8Bit(found->pw_name), QFile::decodeName(found->pw_dir), found->pw_uid,
                   found->pw_gid};
}

std::optional<Account> findByName(const QString& name) {
    const QByteArray text = name.toLocal8Bit();
    return findAccount([&](auto... rest) { return ::getpwnam_r(text.constData(), rest...); });
}

std::optional<Account> findById(uid_t uid) {
    return findAccount([&](auto... rest) { return ::getpwuid_r(uid, rest...); });
}

Account getAccount(const QString& name) {
    if (auto account = findByName(name)) {
        return *account;
    }
    throw std::runtime_error("there is no user " + name.toStdString());
}

void become(const Account& account) {
    if (account.uid == ::geteuid()) {
        return;
    }
    const QByteArray name = account.name.toLocal8Bit();
    const bool good = account.name.isEmpty() ? ::setgroups(0, nullptr) == 0
                                             : ::initgroups(name.constData(), account.gid) == 0;
    if (!good || ::setgid(account.gid) != 0 || ::setuid(account.uid) != 0) {
        throw std::runtime_error("cannot become user " + account.name.toStdString() + ": " +
                                 QUORSystem::errorText().toStdString() + "; try as root");
    }
}

} // namespace

void ServiceUser::addOption(CLI::App& app) {
    app.add_option("--user", _named,
                   "The user that the service runs as (default: this one, for root the background user)")
        ->type_name("NAME")
        ->check([](const std::string& name) {
            return findByName(QString::fromStdString(name)) ? std::string() : "there is no user " + name;
        });
}

QString ServiceUser::current() {
    const auto account = findById(::geteuid());
    return account ? account->name : QString::number(::geteuid());
}

/// Empty for the user of this process.
QString ServiceUser::findName() const {
    if (!_named.empty()) {
        return QString::fromStdString(_named);
    }
    const QString background = ::geteuid() == 0 ? QUORBackgroundSettings::getBgUsername() : QString();
    return findByName(background) ? background : QString();
}

void ServiceUser::enterHome() const {
    const QString name = findName();
    if (name.isEmpty()) {
        return;
    }
    const Account account = getAccount(name);
    if (account.uid == ::geteuid()) {
        return; // with its own environment
    }
    qputenv("HOME", QFile::encodeName(account.home));
    qputenv("USER", account.name.toLocal8Bit());
    qputenv("LOGNAME", account.name.toLocal8Bit());
    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("XDG_RUNTIME_DIR");
    // The settings layer has looked at the environment before.
    for (const QSettings::Format format : {QSettings::NativeFormat, QSettings::IniFormat}) {
        QSettings::setPath(format, QSettings::UserScope, account.home + QStringLiteral("/.config"));
    }
}

void ServiceUser::become() const {
    enterHome();
    if (const QString name = findName(); !name.isEmpty()) {
        ::become(getAccount(name));
    }
}

void ServiceUser::becomeOwnerOf(const QString& file) const {
    struct stat info {};
    const bool exists = ::stat(QFile::encodeName(file).constData(), &info) == 0;
    const QString name = findName();
    if (_named.empty() && exists && ::geteuid() == 0) {
        ::become(findById(info.st_uid).value_or(Account{{}, {}, info.st_uid, info.st_gid}));
    } else if (!name.isEmpty()) {
        ::become(getAccount(name));
    } else if (::geteuid() == 0) {
        throw std::runtime_error(
            "a new file would belong to root, name the user of the service with --user: " +
            file.toStdString());
    }
}
