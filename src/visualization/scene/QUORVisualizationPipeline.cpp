// SPDX-License-Identifier: MIT
#include "QUORVisualizationPipeline.h"

#include "QUORLog.h"
#include "QUORThreadStart.h"

#include <exception>
#include <utility>

namespace {

/// False when memory or VTK failed it outside any element.
bool build(QUORVisualizationPipelineItem& item, const QUORAbortFlag& abort) {
    try {
        item.update(abort);
        if (!abort) {
            item.readResults();
        }
        return !abort;
    } catch (const std::exception& exception) {
        QUORLog::Instance().logError(QStringLiteral("Building the scene failed: ") +
                                     QString::fromLocal8Bit(exception.what()));
    }
    return false;
}

} // namespace

QUORVisualizationPipeline::QUORVisualizationPipeline() {
    const QUORLogScope scope("QUORVisualizationPipeline::QUORVisualizationPipeline");
    QUORThreadStart::start(*this, "pipeline");
}

QUORVisualizationPipeline::~QUORVisualizationPipeline() {
    const QUORLogScope scope("QUORVisualizationPipeline::~QUORVisualizationPipeline");
    stop();
}

void QUORVisualizationPipeline::addInput(const QUORVisualizationPipelineItem::Ptr& item) {
    const QUORLogScope scope("QUORVisualizationPipeline::addInput");
    const std::lock_guard lock(_mutex);
    if (!_running) {
        return;
    }
    if (_input.isEmpty()) {
        _wake.notify_one();
    }
    _input.enqueue(item);
    item->beginUse();
}

void QUORVisualizationPipeline::addOutput(const QUORVisualizationPipelineItem::Ptr& item) {
    const std::lock_guard lock(_mutex);
    _output.enqueue(item);
}

QUORVisualizationPipelineItem::Ptr QUORVisualizationPipeline::getResultItem() {
    const std::lock_guard lock(_mutex);
    return _output.isEmpty() ? nullptr : _output.dequeue();
}

void QUORVisualizationPipeline::stop() {
    const QUORLogScope scope("QUORVisualizationPipeline::stop");
    _aborted.set();
    {
        const std::lock_guard lock(_mutex);
        _running = false;
        _wake.notify_all();
    }
    wait();
    const std::lock_guard lock(_mutex);
    for (const QUORVisualizationPipelineItem::Ptr& item : std::as_const(_input)) {
        item->endUse();
    }
    _input.clear();
}

void QUORVisualizationPipeline::abort() {
    const QUORLogScope scope("QUORVisualizationPipeline::abort");
    _aborted.set();
}

void QUORVisualizationPipeline::run() {
    {
        const QUORLogScope scope("QUORVisualizationPipeline::run");
        while (_running) {
            if (QUORVisualizationPipelineItem::Ptr item = takeInput()) {
                process(std::move(item));
            }
        }
    }
    const std::lock_guard lock(_mutex);
    _running = false;
}

QUORVisualizationPipelineItem::Ptr QUORVisualizationPipeline::takeInput() {
    std::unique_lock lock(_mutex);
    if (!_input.isEmpty()) {
        return _input.dequeue();
    }
    if (!_running) {
        return {};
    }
    logDebug(QStringLiteral("QUORVisualizationPipeline::run(): Input queue empty, going to wait."));
    _wake.wait(lock);
    lock.unlock();
    logDebug(QStringLiteral("QUORVisualizationPipeline::run(): Woke up."));
    return {};
}

void QUORVisualizationPipeline::process(QUORVisualizationPipelineItem::Ptr item) {
    logDebug(QStringLiteral("QUORVisualizationPipeline::run(): New input data."));
    logDebug(QStringLiteral("Update visualization-->"));
    if (build(*item, _aborted)) {
        addOutput(item);
    }
    logDebug(QStringLiteral("<--Update visualization"));
    item->endUse();
    // From here on the item may belong to the caller's thread, and must not die on this one.
    item.reset();
    logDebug(QStringLiteral("Signal: visualizationFinished"));
    if (_aborted) {
        logDebug(QStringLiteral("QUORVisualizationPipeline::run(): ABORTED!"));
    }
    Q_EMIT allDone();
}
