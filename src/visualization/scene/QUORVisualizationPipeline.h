// SPDX-License-Identifier: MIT
#pragma once

#include "QUORAbortFlag.h"
#include "QUORVisualizationPipelineItem.h"

#include <QQueue>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

/// The worker thread that builds scenes: items go into the input queue, and those that were completed come
/// out of the output queue, first in first out. The mutex guards both queues and the running flag; the
/// worker never holds it during an update.
///
/// The controller owns the pipeline and calls all but `run`. A stopped pipeline is not restarted.
class QUORVisualizationPipeline : public QThread {
    Q_OBJECT

public:
    using Ptr = std::shared_ptr<QUORVisualizationPipeline>;
    using CPtr = std::shared_ptr<const QUORVisualizationPipeline>;

    /// Starts the thread.
    QUORVisualizationPipeline();
    /// Stops and joins it.
    ~QUORVisualizationPipeline() override;
    QUORVisualizationPipeline(const QUORVisualizationPipeline&) = delete;
    QUORVisualizationPipeline& operator=(const QUORVisualizationPipeline&) = delete;

    /// Marks the item in use and queues it; nothing once the pipeline was stopped.
    void addInput(const QUORVisualizationPipelineItem::Ptr& item);
    void addOutput(const QUORVisualizationPipelineItem::Ptr& item);
    /// The oldest completed item, or null.
    QUORVisualizationPipelineItem::Ptr getResultItem();
    /// Aborts the running update and joins the thread; items that still wait are not built. Again: returns
    /// at once.
    void stop();
    /// Cuts short the running update and all later ones.
    void abort();

Q_SIGNALS:
    /// On the worker thread after every item, an aborted one too (which is then not in the output queue).
    void allDone();

protected:
    void run() override;

private:
    /// Waits while there is nothing to do; null when woken without an item.
    QUORVisualizationPipelineItem::Ptr takeInput();
    void process(QUORVisualizationPipelineItem::Ptr item);

    std::mutex _mutex;
    std::condition_variable _wake;
    QQueue<QUORVisualizationPipelineItem::Ptr> _input;
    QQueue<QUORVisualizationPipelineItem::Ptr> _output;
    std::atomic<bool> _running{true};
    QUORAbortFlag _aborted;
};
