// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureOrder.h"

#include <vtkSmartPointer.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

class vtkImageData;

/// Writes the pictures of one scene beside the drawing of the next: a thread that ends when all is written,
/// and no more pictures in memory than it takes to keep it busy. Used by one thread.
class QUORPictureQueue {
public:
    QUORPictureQueue();
    /// Writes what is left.
    ~QUORPictureQueue();
    QUORPictureQueue(const QUORPictureQueue&) = delete;
    QUORPictureQueue& operator=(const QUORPictureQueue&) = delete;

    /// Where the next picture goes; its owner keeps its hands off it after `add`.
    vtkImageData* next();
    /// Queues the picture of the last `next`; waits while that many are there already. The order tells what
    /// became of it after `finish`, and lives until then.
    void add(QUORPictureOrder& order);
    /// Returns when all is written. Nothing may be added any more.
    void finish();

    /// Writes one picture at once. What goes wrong is in the log and in the order.
    static void write(vtkImageData* picture, QUORPictureOrder& order);

private:
    struct Item {
        vtkImageData* picture;
        QUORPictureOrder* order;
    };

    void run();

    /// One is drawn, one waits, one is being written.
    static constexpr std::size_t PICTURES = 3;
    std::array<vtkSmartPointer<vtkImageData>, PICTURES> _pictures;
    std::size_t _next = 0;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<Item> _items; ///< the first is being written
    bool _isEnding = false;
    std::thread _thread;
};
