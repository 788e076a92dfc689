// SPDX-License-Identifier: MIT
#pragma once

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

/// The process-wide log. Any thread may log: one mutex serialises the writing of whole lines.
/// Level, destination and message handlers are set on the main thread before other threads start.
///
/// A line is the timestamp (files only), the level prefix, the message and a newline. It is written
/// in one piece to an unbuffered descriptor, so a full disk loses that line and no later one.
/// Control characters in a message become "_", so that a message is always one line. Where standard error
/// is a stream of the journal, a line begins with its priority ("<3>" for an error).
///
/// A reader of standard error that does not keep up never stops the process: lines are dropped, and the
/// next one that finds room is preceded by their number.
class QUORLog : public QObject {
    Q_OBJECT

public:
    /// Highest level that is written; each value also names a line prefix.
    enum Level { Error = 0, Warning = 1, Notice = 2, Debug = 3 };

    /// The single logger, created on first use.
    static QUORLog& Instance();
    /// False once the logger has been destroyed at process exit; late messages are then dropped.
    static bool isAlive();

    ~QUORLog() override;

    /// Clamped to Error..Debug.
    void setLevel(int level);
    int level() const { return _level.load(std::memory_order_relaxed); }

    /// Opens the destination and writes `name` + " starting", without a prefix.
    void logInit(const QString& name, const QString& fileName);
    /// Appends to the named file, or writes to standard error for an empty name or when the file
    /// cannot be opened.
    void logOpen(const QString& fileName);
    /// Opens the log file again under its name, as after it was moved away; keeps the one in use, with an
    /// error line, when that fails. Nothing where lines go to standard error.
    void logReopen();

    /// Writes one line when the level is due; dropped before `logOpen`.
    void logLog(const QString& text, int level);
    void logError(const QString& text);
    void logWarning(const QString& text);
    void logNotice(const QString& text);
    void logDebug(const QString& text);

    /// Writes an error line of a fatal signal's handler: takes no lock, allocates nothing, and gives up where
    /// there is no room.
    static void writeLastWords(const char* text) noexcept;

    /// Status and history lines are for a connected user interface; their text is not logged.
    void logStatus(const QString& text, int secs);
    void logHistory(const QString& text);
    void logHistory(const QStringList& texts);
    void logConnect(QObject* object, const char* historySlot, const char* statusSlot);

Q_SIGNALS:
    void historyAdd(const QString& text);
    void historyAdd(const QStringList& texts);
    void statusAdd(const QString& status, int secs);

private:
    QUORLog() = default;
    void writeLine(const QString& text, int level);
    void writeOut(const QByteArray& line);
    QByteArray beginLine(int level) const;
    bool openFile(const QString& fileName);
    void openConsole();
    void closeFile();

    QMutex _mutex;
    int _descriptor = -1;
    QString _fileName; ///< absolute; empty for standard error
    bool _ownsDescriptor = false;
    bool _isJournal = false;
    qint64 _dropped = 0;
    /// The last write filled the disk inside a line: the next line begins on a new one.
    bool _isCutOff = false;
    std::atomic<int> _level{Error};
};

/// Shorthand for the one logger.
void logDebug(const QString& text);
void logWarning(const QString& text);

/// Logs "<method>() called." now and "<method>() finished." at the end of the scope, at debug level. The
/// method's name may come in two parts.
class QUORLogScope {
public:
    explicit QUORLogScope(const char* method, const char* rest = "");
    ~QUORLogScope();
    QUORLogScope(const QUORLogScope&) = delete;
    QUORLogScope& operator=(const QUORLogScope&) = delete;

private:
    const char* _method;
    const char* _rest;
};
