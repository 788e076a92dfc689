// SPDX-License-Identifier: MIT
#include "QUORApplication.h"

#include "QUORLog.h"
#include "QUORProcessSetup.h"
#include "QUORSystem.h"
#include "QUORToolMessages.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTranslator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

namespace {

const QString OPTION_HELP = QStringLiteral("help");
const QString OPTION_VERSION = QStringLiteral("version");
const QString OPTION_LOGLEVEL = QStringLiteral("loglevel");
const QString OPTION_LOGFILE = QStringLiteral("logfile");
const QString OPTION_DAEMON = QStringLiteral("daemon");
const QString OPTION_LANGUAGE = QStringLiteral("language");

constexpr int PROCESS_TIMEOUT_MS = 30000;
const QString NO_SERVICE_COMMAND = QStringLiteral("INVALID");

struct OptionText {
    const QString& name;
    const char* help;
};

const std::array OPTION_TEXTS{
    OptionText{OPTION_HELP, "display this help and exit"},
    OptionText{OPTION_VERSION, "display program version and exit"},
    OptionText{OPTION_LOGLEVEL, "loglevel='number', adjust logging level, number can be"
                                "\n\t\t\t0 error (default)\n\t\t\t1 warning\n\t\t\t2 notice\n\t\t\t3 debug"},
    OptionText{OPTION_LOGFILE, "logfile='filename', name of the log file, only for background processes"},
    OptionText{OPTION_LANGUAGE, "language='lang_[country]', lang is a two letter language code and "
                                "\n\t\t\t country is an optinal country code"},
};

void print(const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

// The toolkit keeps a reference for the life of the application object.
int& toolkitArgumentCount(int argc) {
    static int count = 0;
    count = std::min(argc, 1);
    QUORProcessSetup::beforeToolkit();
    return count;
}

// Takes every waiting byte; false when there was none.
bool drain(int descriptor) {
    std::array<char, 64> bytes{};
    bool any = false;
    while (::read(descriptor, bytes.data(), bytes.size()) > 0) {
        any = true;
    }
    return any;
}

void writeByte(int descriptor) {
    const int saved = errno;
    const char byte = 1;
    if (descriptor >= 0) {
        const ssize_t written = ::write(descriptor, &byte, sizeof byte);
        Q_UNUSED(written);
    }
    errno = saved;
}

bool installHandler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return ::sigaction(signal, &action, nullptr) == 0;
}

bool openPair(int (&pair)[2]) {
    return ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, pair) == 0;
}

/// False when the other side has ended without a word.
bool awaitByte(int descriptor) {
    char byte = 0;
    ssize_t count = 0;
    do {
        count = ::read(descriptor, &byte, sizeof byte);
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

/// What the person who starts a daemon has to learn: the log of a daemon is a file.
void printError(const QString& text) {
    std::fputs((text + QLatin1Char('\n')).toLocal8Bit().constData(), stderr);
}

QString findServiceCommand() {
    QProcess process;
    process.start(QStringLiteral("whereis"), {QStringLiteral("-b"), QStringLiteral("service")});
    process.waitForFinished(PROCESS_TIMEOUT_MS);
    static const QRegularExpression path(QStringLiteral("^service:.*?\\s(/\\S+)"));
    return path.match(QString::fromLocal8Bit(process.readAllStandardOutput())).captured(1);
}

} // namespace

QString QUORApplication::serviceCommand;
int QUORApplication::sighupFd[2] = {-1, -1};
int QUORApplication::sigtermFd[2] = {-1, -1};

QUORApplication::QUORApplication(int& argc, char** argv) : QApplication(toolkitArgumentCount(argc), argv) {
    QUORProcessSetup::afterToolkit();
    QStringList given;
    for (int i = 0; i < argc; ++i) {
        given.append(QString::fromLocal8Bit(argv[i]));
    }
    _commandLine.setArguments(given);
    setOrganizationName(ORGANIZATION_NAME);
    setOrganizationDomain(ORGANIZATION_DOMAIN);
}

QUORApplication::~QUORApplication() = default;

int QUORApplication::init() {
    for (const OptionText& option : OPTION_TEXTS) {
        addOption(option.name, QString::fromLatin1(option.help));
    }
    if (!checkOptions()) {
        return -1;
    }
    const bool asDaemon = optionPresent(OPTION_DAEMON);
    startLogging(asDaemon ? getLogFileName() : QString());
    if (optionPresent(OPTION_LANGUAGE)) {
        installTranslators();
    }
    if (optionPresent(OPTION_HELP)) {
        printHelp();
        return -1;
    }
    if (optionPresent(OPTION_VERSION)) {
        printVersion();
        return -1;
    }
    QUORProcessSetup::reportFatalSignals();
    if (asDaemon) {
        if (!lockPIDFile()) {
            return -1;
        }
        if (const int result = startDaemon(); result < 0) {
            return result;
        }
    }
    setupNativeSignals();
    return 0;
}

void QUORApplication::confirmStart() {
    if (_parentPipe >= 0) {
        writeByte(_parentPipe);
        ::close(std::exchange(_parentPipe, -1));
    }
}

void QUORApplication::printHelp() {
    print(_commandLine.getHelpText());
}

void QUORApplication::printVersion() {
    print(QStringLiteral("Version: ") + _version + QLatin1Char('\n'));
}

bool QUORApplication::checkOptions() const {
    const QStringList invalid = _commandLine.findInvalidOptions();
    for (const QString& name : invalid) {
        print(QStringLiteral("Invalid option: ") + name + QLatin1Char('\n'));
    }
    return invalid.isEmpty();
}

void QUORApplication::optionValue(const QString& name, int& value, int defaultValue, int min, int max) const {
    const QString text = getOptionValue(name);
    value = std::clamp(text.isEmpty() ? defaultValue : text.toInt(), min, max);
}

void QUORApplication::optionValue(const QString& name, QString& value, const QString& defaultValue) const {
    const QString text = getOptionValue(name);
    value = text.isEmpty() ? defaultValue : text;
}

QString QUORApplication::getLogFileName() const {
    if (optionPresent(OPTION_LOGFILE)) {
        return QUORSystem::expandHome(getOptionValue(OPTION_LOGFILE));
    }
    const QString home = QDir::homePath();
    return (QFileInfo(home).isDir() ? home + QLatin1Char('/') : QStringLiteral("/")) + getExeName() +
           QStringLiteral(".log");
}

void QUORApplication::startLogging(const QString& logFileName) {
    int level = QUORLog::Error;
    optionValue(OPTION_LOGLEVEL, level, QUORLog::Error, QUORLog::Error, QUORLog::Debug);
    QUORLog::Instance().setLevel(level);
    QUORLog::Instance().logInit(getExeName(), logFileName);
    QUORToolMessages::install();
}

void QUORApplication::installTranslators() {
    const QString language = getOptionValue(OPTION_LANGUAGE);
    installApplicationTranslator(language);
    installToolkitTranslator(language);
}

void QUORApplication::installApplicationTranslator(const QString& language) {
    _applicationTranslator = new QTranslator(this);
    const QFileInfo file(language);
    bool loaded = false;
    if (!file.isFile()) {
        loaded = _applicationTranslator->load(QStringLiteral("quor3d_") + language,
                                              QStringLiteral(":/translations"));
    } else if (file.suffix() == QStringLiteral("qm")) {
        loaded = _applicationTranslator->load(file.completeBaseName(), file.absolutePath());
    } else {
        QUORLog::Instance().logError(QStringLiteral("Invalid translation file: ") + language);
    }
    if (loaded) {
        installTranslator(_applicationTranslator);
    } else {
        QUORLog::Instance().logError(QStringLiteral("Could not locate application translation: ") + language);
    }
}

void QUORApplication::installToolkitTranslator(const QString& language) {
    _toolkitTranslator = new QTranslator(this);
    if (_toolkitTranslator->load(QStringLiteral("qt_") + language,
                                 QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        installTranslator(_toolkitTranslator);
    } else {
        QUORLog::Instance().logError(QStringLiteral("Could not locate Qt translation: ") + language);
    }
}

int QUORApplication::startDaemon() {
    QUORLog& log = QUORLog::Instance();
    // Closed by the daemon when it is ready for signals, and by the system when it dies before that.
    int ready[2] = {-1, -1};
    if (::pipe2(ready, O_CLOEXEC) != 0) {
        log.logWarning(QStringLiteral("No pipe to the daemon, the PID file may be written later"));
    }
    const pid_t child = ::fork();
    if (child < 0) {
        const QString reason = QUORSystem::errorText();
        log.logError(QStringLiteral("Failed to start daemon"));
        printError(QStringLiteral("Failed to start daemon: ") + reason);
        ::close(ready[0]);
        ::close(ready[1]);
        _exitStatus = 1;
        return -1;
    }
    if (child > 0) {
        log.logNotice(QStringLiteral("Daemon forked - parent stopping..."));
        ::close(ready[1]);
        return awaitChild(ready[0]);
    }
    ::close(ready[0]);
    _parentPipe = ready[1];
    log.logDebug(QStringLiteral("   ... child continues"));
    continueAsDaemon();
    return 0;
}

int QUORApplication::awaitChild(int readyPipe) {
    if (readyPipe >= 0 && !awaitByte(readyPipe)) {
        printError(QStringLiteral("The service did not start, its log says why: ") + getLogFileName());
        _exitStatus = 1;
    }
    ::close(readyPipe);
    return -2;
}

void QUORApplication::continueAsDaemon() {
    ::setsid();
    QUORProcessSetup::detachStandardStreams();
    const QString home = QDir::homePath();
    const QString directory = QFileInfo(home).isDir() ? home : QStringLiteral("/");
    QUORLog::Instance().logDebug(QStringLiteral("Setting working directory to ") + directory);
    QDir::setCurrent(directory);
    updatePIDFile();
    ::umask(0);
    _isDaemon = true;
}

// False when another daemon works under the file. Without a file the service works all the same.
bool QUORApplication::lockPIDFile() {
    if (const QString path = getEnvVar(QStringLiteral("PIDFILE")); !path.isEmpty()) {
        _pidFilePath = path;
    }
    if (_pidFilePath.isEmpty()) {
        return true;
    }
    const QUORPidFile::Result result = _pidFile.lock(_pidFilePath);
    if (result == QUORPidFile::Failed) {
        printError(QStringLiteral("Opening pid-file failed: ") + _pidFilePath + QStringLiteral(": ") +
                   _pidFile.getError());
    }
    if (result != QUORPidFile::Taken) {
        return true;
    }
    const QString refusal = QStringLiteral("Not started: another service works under the pid-file ") +
                            _pidFilePath + QStringLiteral(", process ") + QString::number(_pidFile.readPid());
    refuse(refusal);
    return false;
}

/// For the log, and for a terminal that the log does not go to.
void QUORApplication::refuse(const QString& reason) {
    QUORLog::Instance().logError(reason);
    if (optionPresent(OPTION_DAEMON)) {
        printError(reason);
    }
    _exitStatus = 1;
}

void QUORApplication::updatePIDFile() {
    QUORLog& log = QUORLog::Instance();
    if (_pidFilePath.isEmpty()) {
        log.logWarning(QStringLiteral("No pid-file"));
        return;
    }
    log.logDebug(QStringLiteral("Writing pidfile: ") + _pidFilePath);
    if (!_pidFile.write()) {
        log.logError(QStringLiteral("Opening pid-file failed: ") + _pidFilePath + QStringLiteral(": ") +
                     _pidFile.getError());
    }
}

void QUORApplication::setupNativeSignals() {
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("QUORApplication::setupNativeSignals() - creating sockets"));
    if (openPair(sighupFd)) {
        _hupNotifier = new QSocketNotifier(sighupFd[1], QSocketNotifier::Read, this);
        connect(_hupNotifier, &QSocketNotifier::activated, this, &QUORApplication::handleSigHup,
                Qt::QueuedConnection);
    } else {
        log.logError(QStringLiteral("Couldn't create HUP socketpair"));
    }
    if (openPair(sigtermFd)) {
        _termNotifier = new QSocketNotifier(sigtermFd[1], QSocketNotifier::Read, this);
        connect(_termNotifier, &QSocketNotifier::activated, this, &QUORApplication::handleSigTerm,
                Qt::QueuedConnection);
    } else {
        log.logError(QStringLiteral("Couldn't create TERM socketpair"));
    }
    log.logDebug(QStringLiteral("QUORApplication::setupNativeSignals() - installing signal handlers"));
    const bool isAtTerminal = !_isDaemon && ::isatty(STDERR_FILENO) == 1;
    const bool hupInstalled =
        isAtTerminal || (_hupNotifier != nullptr && installHandler(SIGHUP, hupSignalHandler));
    const bool termInstalled = _termNotifier != nullptr && installHandler(SIGTERM, termSignalHandler);
    if (!hupInstalled || !termInstalled) {
        log.logError(QStringLiteral("Error setting up signal handlers"));
    }
}

void QUORApplication::termSignalHandler(int) {
    writeByte(sigtermFd[0]);
}

void QUORApplication::hupSignalHandler(int) {
    writeByte(sighupFd[0]);
}

void QUORApplication::handleSigTerm() {
    _termNotifier->setEnabled(false);
    const bool received = drain(sigtermFd[1]);
    if (received) {
        QUORLog::Instance().logNotice(QStringLiteral("Termination signal received - quitting..."));
    }
    _termNotifier->setEnabled(true);
    if (received) {
        quit();
    }
}

void QUORApplication::handleSigHup() {
    _hupNotifier->setEnabled(false);
    if (drain(sighupFd[1])) {
        QUORLog::Instance().logReopen();
        QUORLog::Instance().logNotice(QStringLiteral("HANGUP signal received"));
    }
    _hupNotifier->setEnabled(true);
}

bool QUORApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        QUORLog::Instance().logError(QStringLiteral("Exception in an event handler: ") +
                                     QString::fromLocal8Bit(error.what()));
    } catch (...) {
        QUORLog::Instance().logError(QStringLiteral("Exception in an event handler"));
    }
    return false;
}

int QUORApplication::getMyPid() {
    return int(::getpid());
}

QString QUORApplication::getLoginUser() {
    return getEnvVar(QStringLiteral("USER"));
}

QString QUORApplication::getEnvVar(const QString& name) {
    return qEnvironmentVariable(name.toLocal8Bit().constData());
}

bool QUORApplication::getDiskSpace(const QString& path, int& total, int& available) {
    total = 0;
    available = 0;
    const QByteArray name = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    struct stat status {};
    if (::stat(name.constData(), &status) != 0) {
        QUORLog::Instance().logDebug(QStringLiteral("stat returns ") + QString::number(errno));
        return false;
    }
    struct statfs fileSystem {};
    if (::statfs(name.constData(), &fileSystem) != 0) {
        QUORLog::Instance().logDebug(QStringLiteral("statfs returns ") + QString::number(errno));
        return false;
    }
    const quint32 kibibytes = quint32(status.st_blksize) / 1024U;
    total = int(kibibytes * quint32(fileSystem.f_blocks) / 1024U);
    available = int(kibibytes * quint32(fileSystem.f_bavail) / 1024U);
    return true;
}

bool QUORApplication::isServiceRunning(const QString& serviceName) {
    QUORLog& log = QUORLog::Instance();
    if (serviceCommand.isEmpty()) {
        serviceCommand = findServiceCommand();
        if (!serviceCommand.isEmpty()) {
            log.logDebug(QStringLiteral("Service command is: ") + serviceCommand);
        } else {
            serviceCommand = NO_SERVICE_COMMAND;
            log.logError(QStringLiteral("Could not locate shell command 'service'"));
            log.logNotice(QStringLiteral("Background task activity indicator will not work"));
        }
    }
    if (serviceCommand == NO_SERVICE_COMMAND) {
        return false;
    }
    QProcess process;
    process.start(serviceCommand, {serviceName, QStringLiteral("status")});
    const bool finished =
        process.waitForFinished(PROCESS_TIMEOUT_MS) && process.exitStatus() == QProcess::NormalExit;
    log.logDebug(QStringLiteral("Service status check: ") + serviceName + QStringLiteral(" -> ") +
                 QString::number(process.exitCode()));
    return finished && process.exitCode() == 0;
}
