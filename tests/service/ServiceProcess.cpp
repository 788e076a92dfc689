// SPDX-License-Identifier: MIT
#include "ServiceProcess.h"

#include "TestFiles.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFileInfo>

#include <csignal>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

// What other programs left behind falls to us as well.
void reapStrangers() {
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

qint64 findChild() {
    const QString self = QString::number(::getpid());
    const QByteArray children = readFile(QStringLiteral("/proc/%1/task/%1/children").arg(self));
    return children.simplified().split(' ').first().toLongLong();
}

} // namespace

ServiceProcess::ServiceProcess() : _environment(QProcessEnvironment::systemEnvironment()) {
    // A daemon becomes our child, so that its exit status can be seen.
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    _environment.insert(QStringLiteral("HOME"), _home.path());
    _environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral(".config")));
    _environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), path(QStringLiteral("xdg")));
    _environment.insert(QStringLiteral("PIDFILE"), path(QStringLiteral("pid")));
    _environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    _environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nosuch"));
    _environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":97"));
}

ServiceProcess::~ServiceProcess() {
    if (_daemon > 0) {
        signal(SIGKILL);
        waitForEnd();
    }
}

QString ServiceProcess::path(const QString& name) const {
    const QString result = _home.filePath(name);
    QDir().mkpath(QFileInfo(result).path());
    return result;
}

void ServiceProcess::write(const QString& name, const QByteArray& content) const {
    writeFile(path(name), content);
}

QByteArray ServiceProcess::read(const QString& name) const {
    return readFile(path(name));
}

ServiceProcess::Result ServiceProcess::run(const QStringList& arguments, const QString& redirections) {
    QProcess process;
    process.setProcessEnvironment(_environment);
    process.setWorkingDirectory(_home.path());
    process.start(QStringLiteral("/bin/sh"),
                  QStringList{QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" ") + redirections,
                              QStringLiteral(QUOR3DD_BINARY)} +
                      arguments);
    process.waitForFinished(30000);
    const bool ended =
        process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
    return {QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()), ended ? process.exitCode() : -1};
}

bool ServiceProcess::startDaemon(const QStringList& arguments, const QString& redirections) {
    reapStrangers();
    run(QStringList{QStringLiteral("--daemon"), QStringLiteral("--logfile=") + path(QStringLiteral("log"))} +
            arguments,
        redirections);
    _daemon = findChild();
    return _daemon > 0;
}

bool ServiceProcess::startForeground(const QStringList& arguments, int standardError) {
    QList<QByteArray> texts{QUOR3DD_BINARY};
    for (const QString& argument : arguments) {
        texts.append(argument.toLocal8Bit());
    }
    const qsizetype count = texts.size();
    for (const QString& variable : _environment.toStringList()) {
        texts.append(variable.toLocal8Bit());
    }
    std::vector<char*> words;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (i == count) {
            words.push_back(nullptr);
        }
        words.push_back(texts[i].data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, standardError, STDERR_FILENO);
    pid_t pid = 0;
    const int error =
        ::posix_spawn(&pid, QUOR3DD_BINARY, &actions, nullptr, words.data(), words.data() + count + 1);
    ::posix_spawn_file_actions_destroy(&actions);
    _daemon = error == 0 ? pid : 0;
    return error == 0;
}

void ServiceProcess::signal(int number) const {
    ::kill(pid_t(_daemon), number);
}

std::optional<int> ServiceProcess::waitForEnd(int milliseconds) {
    int status = 0;
    if (!waitUntil([&] { return ::waitpid(pid_t(_daemon), &status, WNOHANG) == _daemon; }, milliseconds)) {
        return std::nullopt;
    }
    _daemon = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::optional<int> ServiceProcess::terminate(int milliseconds) {
    signal(SIGTERM);
    return waitForEnd(milliseconds);
}

bool ServiceProcess::waitForLog(const QString& text, int milliseconds) const {
    return waitUntil([&] { return log().contains(text); }, milliseconds);
}
