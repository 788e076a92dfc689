// SPDX-License-Identifier: MIT
#include "QUORPictureQueue.h"

#include "QUORImageWriter.h"
#include "QUORLog.h"
#include "QUORStopwatch.h"

#include <vtkImageData.h>

#include <exception>

QUORPictureQueue::QUORPictureQueue() {
    for (auto& picture : _pictures) {
        picture = vtkSmartPointer<vtkImageData>::New();
    }
    _thread = std::thread([this] { run(); });
}

QUORPictureQueue::~QUORPictureQueue() {
    finish();
}

vtkImageData* QUORPictureQueue::next() {
    return _pictures.at(_next);
}

void QUORPictureQueue::add(QUORPictureOrder& order) {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return _items.size() < PICTURES - 1; });
    _items.push_back({next(), &order});
    _next = (_next + 1) % PICTURES;
    _changed.notify_all();
}

void QUORPictureQueue::finish() {
    {
        const std::lock_guard lock(_mutex);
        _isEnding = true;
        _changed.notify_all();
    }
    if (_thread.joinable()) {
        _thread.join();
    }
}

void QUORPictureQueue::run() {
    std::unique_lock lock(_mutex);
    while (true) {
        _changed.wait(lock, [this] { return _isEnding || !_items.empty(); });
        if (_items.empty()) {
            return;
        }
        const Item item = _items.front();
        lock.unlock();
        try {
            write(item.picture, *item.order);
        } catch (const std::exception& e) {
            item.order->error = QString::fromLocal8Bit(e.what());
            QUORLog::Instance().logError(QStringLiteral("Writing output failed: ") + item.order->path +
                                         QStringLiteral(": ") + item.order->error);
        }
        lock.lock();
        _items.pop_front();
        _changed.notify_all();
    }
}

void QUORPictureQueue::write(vtkImageData* picture, QUORPictureOrder& order) {
    QUORImageWriter writer(order.path);
    const QUORStopwatch watch;
    if (!writer.canOpen() || !writer.write(picture, order.format)) {
        order.error = writer.getError();
        QUORLog::Instance().logError(QStringLiteral("Writing output failed: ") + order.path +
                                     QStringLiteral(": ") + order.error);
        return;
    }
    logDebug(QStringLiteral("..writing took ") + watch.seconds() + QStringLiteral(" seconds."));
    logDebug(QStringLiteral("Wrote output file:"));
    logDebug(order.path);
    order.isWritten = true;
}
