// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCommandLine.h"
#include "QUORPidFile.h"
#include "QUORSystem.h"

#include <QApplication>
#include <QString>

class QSocketNotifier;
class QTranslator;

/// The process shell of the service: command line, start of logging, translations, daemon, PID file and
/// the way from signals to the event loop, and queries about the system. Made first and destroyed last by
/// `main`; used on the main thread only.
///
/// The toolkit sees argument 0 alone, so that it takes none of our options, and never needs a display.
class QUORApplication : public QApplication {
    Q_OBJECT

public:
    inline static const QString ORGANIZATION_NAME = QUORSystem::ORGANIZATION_NAME;
    inline static const QString ORGANIZATION_DOMAIN = QUORSystem::ORGANIZATION_DOMAIN;
    inline static const QString BG_SERVICE_NAME = QUORSystem::BG_SERVICE_NAME;

    QUORApplication(int& argc, char** argv);
    ~QUORApplication() override;

    /// The start-up sequence. 0: go on; negative: end the process now, with `exitStatus` (help, version, an
    /// invalid option, a failed fork, a PID file that another daemon holds, the parent of a daemon).
    virtual int init();
    /// 1 when the start was refused or failed, in the parent of a daemon too; 0 otherwise.
    int exitStatus() const { return _exitStatus; }
    /// Tells the parent of a daemon, which waits for it, that the service has started.
    void confirmStart();
    virtual void printHelp();
    virtual void printVersion();

    void setPIDFilePath(const QString& path) { _pidFilePath = path; }
    void setVersion(const QString& version) { _version = version; }
    QString getVersion() const { return _version; }
    /// True in the daemon child once it is detached.
    bool isDaemon() const { return _isDaemon; }

    void addOption(const QString& name, const QString& helpText) { _commandLine.addOption(name, helpText); }
    /// Names each unknown option on standard output; false when there was one.
    bool checkOptions() const;
    int optionIndex(const QString& name) const { return _commandLine.findOption(name); }
    bool optionPresent(const QString& name) const { return optionIndex(name) > 0; }
    QString getOptionValue(const QString& name) const { return _commandLine.findValue(name); }
    void optionValue(const QString& name, int& value, int defaultValue, int min, int max) const;
    void optionValue(const QString& name, QString& value, const QString& defaultValue) const;

    QString getExeName() const { return _commandLine.getExeName(); }
    QString getLogFileName() const;
    void startLogging(const QString& logFileName);
    void installTranslators();

    /// 0 in the daemon child, -2 in the parent (the child has started or ended by then), -1 when the fork
    /// failed. No other thread and no rendering context may exist.
    int startDaemon();
    /// Writes the id of this process into the PID file.
    void updatePIDFile();
    /// From here on a termination ends the event loop. A hang-up opens the log file again, but not where a
    /// person sits at the terminal: there it ends the process, as usual.
    void setupNativeSignals();

    static int getMyPid();
    static QString getLoginUser();
    static QString getEnvVar(const QString& name);
    static QString getSystemConfigurationDirectory() { return QUORSystem::getSystemConfigurationDirectory(); }
    static QString getUserHomeDirectory(const QString& user) {
        return QUORSystem::getUserHomeDirectory(user);
    }
    static QString getUserSettingsDirectory(const QString& user) {
        return QUORSystem::getUserSettingsDirectory(user);
    }
    /// Mebibytes of the file system that holds the path.
    static bool getDiskSpace(const QString& path, int& total, int& available);
    /// Asks the system's service command; waits for its answer.
    static bool isServiceRunning(const QString& serviceName);

    static void termSignalHandler(int signal);
    static void hupSignalHandler(int signal);

    /// Nothing thrown by an event handler ends the process.
    bool notify(QObject* receiver, QEvent* event) override;

public Q_SLOTS:
    void handleSigHup();
    void handleSigTerm();

private:
    void installApplicationTranslator(const QString& language);
    void installToolkitTranslator(const QString& language);
    bool lockPIDFile();
    void refuse(const QString& reason);
    int awaitChild(int readyPipe);
    void continueAsDaemon();

    int _exitStatus = 0;
    bool _isDaemon = false;
    QString _pidFilePath;
    QUORPidFile _pidFile;
    QString _version;
    /// Open in a daemon child as long as its parent waits.
    int _parentPipe = -1;
    QUORCommandLine _commandLine;
    QSocketNotifier* _hupNotifier = nullptr;
    QSocketNotifier* _termNotifier = nullptr;
    QTranslator* _applicationTranslator = nullptr;
    QTranslator* _toolkitTranslator = nullptr;

    static QString serviceCommand;
    static int sighupFd[2];
    static int sigtermFd[2];
};
