// SPDX-License-Identifier: MIT
#pragma once

#include "RenderSettings.h"
#include "RenderTask.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QProcess;

/// Gives tasks to processes that draw, one at a time each. A process that ends on the way costs nothing but
/// its time: its task goes to a new one once, and pictures that stand already are not drawn again. Runs its
/// own event loop on the main thread.
class WorkerPool : public QObject {
    Q_OBJECT

public:
    struct Result {
        const RenderTask& task;
        const RenderTask::Picture& picture;
        double seconds;
        /// Empty for a picture that was written.
        QString error;
    };
    using Handler = std::function<void(const Result&)>;
    using Messenger = std::function<void(const QString&)>;

    /// Below the folder each process has copies of the settings of its own. `messenger` is given what the
    /// processes say.
    WorkerPool(int jobs, const QString& folder, Handler handler, Messenger messenger);
    ~WorkerPool() override;

    /// Until all is drawn; false when SIGINT or SIGTERM came before: what was begun is then finished, the
    /// rest left.
    bool run(const std::vector<RenderTask>& tasks);

Q_SIGNALS:
    void idle();

private:
    struct Worker;

    void start(Worker& worker);
    void give(Worker& worker);
    void takeAnswers(Worker& worker);
    void takeMessages(Worker& worker);
    void onFinished(Worker& worker);
    void finishTask(Worker& worker, const QString& error);
    void report(Worker& worker, std::size_t index, const QString& error);
    void endWhenIdle();

    QString _folder;
    Handler _handler;
    Messenger _messenger;
    std::vector<std::unique_ptr<Worker>> _workers;
    const std::vector<RenderTask>* _tasks = nullptr;
    std::size_t _next = 0;
    bool _isStopped = false;
};
