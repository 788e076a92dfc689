// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <stdexcept>

/// Why a file of radar data cannot be used: one line, without the name of the file. Thrown by readers and
/// by what makes products of their data, caught where a file or a volume is taken on.
class QUORImportError : public std::runtime_error {
public:
    explicit QUORImportError(const QString& reason) : std::runtime_error(reason.toStdString()) {}

    QString getReason() const { return QString::fromUtf8(what()); }
};

/// Reading took more processor time or memory than it may, or crashed: so it will as long as the file is the
/// same.
class QUORReadingEnded : public QUORImportError {
public:
    using QUORImportError::QUORImportError;
};

/// Reading was ended from outside, lasted too long by the clock or had no process: on a quieter machine it
/// may succeed.
class QUORReadingInterrupted : public QUORImportError {
public:
    using QUORImportError::QUORImportError;
};

/// The data are good, but do not give what the user asks for.
class QUORRequestError : public QUORImportError {
public:
    using QUORImportError::QUORImportError;
};

/// The data are good, but a product could not be written: it may succeed later.
class QUORWriteError : public QUORImportError {
public:
    using QUORImportError::QUORImportError;
};
