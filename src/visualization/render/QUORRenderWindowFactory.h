// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

#include <QString>

class vtkOpenGLRenderWindow;

/// Makes the offscreen window that this machine can draw in. Main thread only, and never before a fork.
namespace QUORRenderWindowFactory {

/// A window with a living OpenGL context: over EGL, or on the X display that the environment names where
/// EGL gives nothing. Null, with the reason in `error`, where neither can draw; nothing is tried that
/// would end the process.
vtkSmartPointer<vtkOpenGLRenderWindow> create(QString& error);

/// Whether a graphics card draws, and not a software rasteriser.
bool isHardware(vtkOpenGLRenderWindow* window);

/// Vendor, renderer and version lines of the window's own report, in one line.
QString describe(vtkOpenGLRenderWindow* window);

} // namespace QUORRenderWindowFactory
