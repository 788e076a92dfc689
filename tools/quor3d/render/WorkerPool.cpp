// SPDX-License-Identifier: MIT
#include "WorkerPool.h"

#include "StopSignals.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QSocketNotifier>

#include <algorithm>
#include <stdexcept>

namespace {

constexpr int MOST_ATTEMPTS = 2;
constexpr int END_MS = 20000;

QByteArray toLine(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

struct WorkerPool::Worker {
    QString settings;
    std::unique_ptr<QProcess> process;
    const RenderTask* task = nullptr;
    int attempt = 0;
    std::vector<bool> answered;
    QElapsedTimer since; ///< the last answer
    QString complaint;   ///< the last error line
};

WorkerPool::WorkerPool(int jobs, const QString& folder, Handler handler, Messenger messenger)
    : _folder(folder), _handler(std::move(handler)), _messenger(std::move(messenger)) {
    for (int i = 0; i < jobs; ++i) {
        _workers.push_back(std::make_unique<Worker>());
        _workers.back()->settings = folder + QStringLiteral("/worker%1").arg(i + 1);
    }
}

WorkerPool::~WorkerPool() {
    for (const auto& worker : _workers) {
        if (worker->process) {
            worker->process->disconnect();
            worker->process->closeWriteChannel();
            if (!worker->process->waitForFinished(END_MS)) {
                worker->process->kill();
                worker->process->waitForFinished();
            }
        }
    }
}

bool WorkerPool::run(const std::vector<RenderTask>& tasks) {
    _tasks = &tasks;
    _next = 0;
    const StopSignals signals;
    QEventLoop loop;
    QSocketNotifier notifier(signals.descriptor(), QSocketNotifier::Read);
    connect(&notifier, &QSocketNotifier::activated, this, [this, &notifier] {
        notifier.setEnabled(false);
        _isStopped = true;
        _messenger(QStringLiteral("stopping: what was begun is finished"));
        endWhenIdle();
    });
    for (const auto& worker : _workers) {
        const QString error = RenderSettings(_folder).copyTo(worker->settings);
        if (!error.isEmpty()) {
            throw std::runtime_error(error.toStdString());
        }
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            for (const auto& worker : _workers) {
                give(*worker);
            }
            endWhenIdle();
        },
        Qt::QueuedConnection);
    const QMetaObject::Connection ended = connect(this, &WorkerPool::idle, &loop, &QEventLoop::quit);
    loop.exec();
    disconnect(ended);
    return !_isStopped;
}

void WorkerPool::start(Worker& worker) {
    worker.process = std::make_unique<QProcess>();
    QProcess& process = *worker.process;
    process.setChildProcessModifier([] { StopSignals::unblockInChild(); });
    connect(&process, &QProcess::readyReadStandardOutput, this, [this, &worker] { takeAnswers(worker); });
    connect(&process, &QProcess::readyReadStandardError, this, [this, &worker] { takeMessages(worker); });
    // Queued: the object is replaced there.
    connect(
        &process, &QProcess::finished, this, [this, &worker] { onFinished(worker); }, Qt::QueuedConnection);
    connect(
        &process, &QProcess::errorOccurred, this,
        [this, &worker](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                onFinished(worker);
            }
        },
        Qt::QueuedConnection);
    process.start(QStringLiteral("/proc/%1/exe").arg(QCoreApplication::applicationPid()),
                  {QStringLiteral("render"), QStringLiteral("--worker")});
    process.write(toLine({{QStringLiteral("settings"), worker.settings}}));
}

void WorkerPool::give(Worker& worker) {
    if (worker.task == nullptr) {
        if (_isStopped || _next >= _tasks->size()) {
            return;
        }
        worker.task = &(*_tasks)[_next++];
        worker.attempt = 0;
        worker.answered.assign(worker.task->pictures.size(), false);
    }
    ++worker.attempt;
    worker.complaint.clear();
    worker.since.start();
    if (!worker.process) {
        start(worker);
    }
    RenderTask rest = *worker.task;
    rest.pictures.clear();
    for (std::size_t i = 0; i < worker.answered.size(); ++i) {
        if (!worker.answered[i]) {
            rest.pictures.push_back(worker.task->pictures[i]);
        }
    }
    worker.process->write(toLine(rest.toJson()));
}

void WorkerPool::takeAnswers(Worker& worker) {
    while (worker.process && worker.process->canReadLine()) {
        const QJsonObject answer = QJsonDocument::fromJson(worker.process->readLine()).object();
        if (worker.task == nullptr) {
            continue;
        }
        if (answer.contains(QStringLiteral("done"))) {
            takeMessages(worker);
            finishTask(worker, QStringLiteral("it could not be drawn"));
            give(worker);
            endWhenIdle();
            continue;
        }
        const QString output = answer[QStringLiteral("output")].toString();
        const auto& pictures = worker.task->pictures;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            if (pictures[i].order.path == output && !worker.answered[i]) {
                takeMessages(worker);
                const bool isWritten = answer[QStringLiteral("written")].toBool();
                report(worker, i, isWritten ? QString() : answer[QStringLiteral("error")].toString());
            }
        }
    }
}

void WorkerPool::takeMessages(Worker& worker) {
    const QString error = QStringLiteral("E: ");
    worker.process->setReadChannel(QProcess::StandardError);
    while (worker.process->canReadLine()) {
        const QString line = QString::fromLocal8Bit(worker.process->readLine()).trimmed();
        if (line.startsWith(error)) {
            worker.complaint = line.mid(error.size());
        }
        _messenger(line);
    }
    worker.process->setReadChannel(QProcess::StandardOutput);
}

/// A process ends by itself only when its input was closed; otherwise a file or the system has ended it.
void WorkerPool::onFinished(Worker& worker) {
    if (!worker.process) {
        return;
    }
    takeAnswers(worker);
    const QProcess& process = *worker.process;
    const QString reason =
        process.error() == QProcess::FailedToStart
            ? QStringLiteral("the process that draws cannot be started: ") + process.errorString()
            : QStringLiteral("the process that drew it was ended") +
                  (process.exitStatus() == QProcess::CrashExit
                       ? QStringLiteral(" by the signal %1").arg(process.exitCode())
                       : QStringLiteral(" with the status %1").arg(process.exitCode()));
    worker.process.reset();
    if (worker.task != nullptr && (worker.attempt >= MOST_ATTEMPTS || _isStopped)) {
        finishTask(worker, reason);
    }
    give(worker);
    endWhenIdle();
}

void WorkerPool::finishTask(Worker& worker, const QString& error) {
    for (std::size_t i = 0; i < worker.answered.size(); ++i) {
        if (!worker.answered[i]) {
            report(worker, i, error);
        }
    }
    worker.task = nullptr;
}

void WorkerPool::report(Worker& worker, std::size_t index, const QString& error) {
    worker.answered[index] = true;
    // The log knows more than the last step did.
    const bool isExplained =
        error.isEmpty() || worker.complaint.isEmpty() || worker.complaint.contains(error);
    _handler({*worker.task, worker.task->pictures[index], 0.001 * double(worker.since.restart()),
              isExplained ? error : error + QStringLiteral(" (") + worker.complaint + QLatin1Char(')')});
}

void WorkerPool::endWhenIdle() {
    const auto isBusy = [](const auto& worker) { return worker->task != nullptr; };
    if (std::ranges::none_of(_workers, isBusy) && (_isStopped || _next >= _tasks->size())) {
        Q_EMIT idle();
    }
}
