// SPDX-License-Identifier: MIT
#include "RenderProgress.h"

#include <iostream>
#include <unistd.h>

namespace {

constexpr int BAR = 30;
constexpr int TERMINAL_MS = 100;
constexpr int PIPE_MS = 10000;

QString duration(double seconds) {
    if (seconds < 90.0) {
        return QString::number(seconds, 'f', 0) + QStringLiteral(" s");
    }
    const double minutes = seconds / 60.0;
    return minutes < 90.0 ? QString::number(minutes, 'f', 0) + QStringLiteral(" min")
                          : QString::number(minutes / 60.0, 'f', 1) + QStringLiteral(" h");
}

} // namespace

RenderProgress::RenderProgress(std::size_t total) : _total(total), _isTerminal(::isatty(STDERR_FILENO) == 1) {
    _began.start();
    _shown.start();
}

RenderProgress::~RenderProgress() {
    clear();
}

QString RenderProgress::describe() const {
    const double seconds = std::max(1.0e-3, 0.001 * double(_began.elapsed()));
    const double rate = double(_done) / seconds;
    QString text = QStringLiteral("%1 of %2").arg(_done).arg(_total);
    if (_done > 0) {
        text += QStringLiteral(", %1 a second").arg(rate, 0, 'f', rate < 10.0 ? 2 : 0);
        if (_done < _total) {
            text += QStringLiteral(", ") + duration(double(_total - _done) / rate) + QStringLiteral(" left");
        }
    }
    return text;
}

void RenderProgress::step() {
    ++_done;
    if (_shown.elapsed() >= (_isTerminal ? TERMINAL_MS : PIPE_MS)) {
        _shown.restart();
        show();
    }
}

void RenderProgress::show() {
    if (!_isTerminal) {
        std::cerr << describe().toStdString() << std::endl;
        return;
    }
    const int filled = _total == 0 ? BAR : int(BAR * _done / _total);
    std::cerr << "\r\x1b[K[" << std::string(std::size_t(filled), '#')
              << std::string(std::size_t(BAR - filled), '.') << "] " << describe().toStdString()
              << std::flush;
}

void RenderProgress::clear() {
    if (_isTerminal) {
        std::cerr << "\r\x1b[K" << std::flush;
    }
}

void RenderProgress::say(const QString& text) {
    clear();
    std::cerr << text.toStdString() << std::endl;
}

void RenderProgress::print(const QString& text) {
    if (_isTerminal && ::isatty(STDOUT_FILENO) == 1) {
        clear();
    }
    std::cout << text.toStdString() << std::endl;
}
