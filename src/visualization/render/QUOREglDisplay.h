// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The process's one connection to EGL, opened on first use and kept until the process ends: closing it
/// would break every window that shares it. A graphics card that can make a context is preferred; the
/// software rasteriser needs neither a card nor an X server nor any environment variable.
///
/// The handles are EGL's own opaque pointers (EGLDisplay, EGLConfig, EGLContext), kept as such so that
/// EGL's header stays out of this one. Main thread only, and never before a fork.
class QUOREglDisplay {
public:
    static const QUOREglDisplay& Instance();

    bool isOpen() const { return _display != nullptr; }
    /// Why no display could be opened; empty when one is open.
    QString getError() const { return _error; }
    void* getDisplay() const { return _display; }

    /// A new OpenGL 3.2 core context that needs no surface; null on failure.
    void* createContext() const;

private:
    QUOREglDisplay();
    bool open(void* display);

    void* _display = nullptr;
    void* _config = nullptr;
    QString _error;
};
