// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QString>

#include <cstddef>

/// Tells on standard error how far a long piece of work is: a bar on a terminal, a line now and then
/// elsewhere.
class RenderProgress {
public:
    explicit RenderProgress(std::size_t total);
    ~RenderProgress();
    RenderProgress(const RenderProgress&) = delete;
    RenderProgress& operator=(const RenderProgress&) = delete;

    /// One more is done.
    void step();
    /// A message on a line of its own.
    void say(const QString& text);
    /// The result on standard output, without the bar getting in its way.
    void print(const QString& text);

private:
    QString describe() const;
    void clear();
    void show();

    std::size_t _total;
    std::size_t _done = 0;
    bool _isTerminal;
    QElapsedTimer _began;
    QElapsedTimer _shown;
};
