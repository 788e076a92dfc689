// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

/// The status file of a service, as it was written last, and what that says about the process.
class ServiceStatus {
public:
    enum class State {
        Running,
        Silent, ///< the process lives and has written nothing for minutes
        Ended,
    };

    /// False, with the reason in `error`, when there is no such file or it holds no status.
    bool read(const QString& file, QString& error);

    State getState() const { return _state; }
    /// "running", "silent" or "ended".
    QString getStateName() const;
    void print() const;
    /// What the file holds, with "state" and "file".
    QJsonObject toJson() const;

    /// Where a service writes unless told otherwise: below /run, or in the home directory of this user. The
    /// first that exists, or the last.
    static QString findDefaultFile();

private:
    void printImages() const;

    QString _file;
    QJsonObject _object;
    State _state = State::Ended;
};
