// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>

/// Runs the real program under a home of its own. What it leaves running is killed with the object.
class ServiceProcess {
public:
    struct Result {
        QString output;
        QString errors;
        int exitCode = -1;
    };

    ServiceProcess();
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// A path in the home directory; the folder above it is made.
    QString path(const QString& name) const;
    void write(const QString& name, const QByteArray& content) const;
    QByteArray read(const QString& name) const;
    QProcessEnvironment& environment() { return _environment; }

    /// Runs to the end, at most half a minute.
    Result run(const QStringList& arguments, const QString& redirections = {});
    /// Starts a daemon that logs to "log" and writes "pid" in the home directory; false when none runs when
    /// its parent has ended. One at a time in the test program.
    bool startDaemon(const QStringList& arguments = {}, const QString& redirections = {});
    /// Starts the program in the foreground with that file as its standard error; false when it cannot be.
    /// Signals and end as with a daemon.
    bool startForeground(const QStringList& arguments, int standardError);
    qint64 daemonPid() const { return _daemon; }
    void signal(int number) const;
    /// The daemon's exit status, or minus the number of the signal that ended it; empty after the deadline.
    std::optional<int> waitForEnd(int milliseconds = 20000);
    /// SIGTERM, then its exit status.
    std::optional<int> terminate(int milliseconds = 20000);

    QString log() const { return QString::fromUtf8(read(QStringLiteral("log"))); }
    bool waitForLog(const QString& text, int milliseconds = 20000) const;

private:
    QTemporaryDir _home;
    QProcessEnvironment _environment;
    qint64 _daemon = 0;
};
