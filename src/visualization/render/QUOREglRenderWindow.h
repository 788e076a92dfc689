// SPDX-License-Identifier: MIT
#pragma once

#include <vtkGenericOpenGLRenderWindow.h>

/// A render window without a window: it draws into framebuffers of an EGL context of its own, needs no X
/// server, and gives the same pixels as a window on one. The context is made on first use. Where none can
/// be made, the window says so once (vtkErrorMacro), draws nothing and does no harm.
///
/// One thread, the main thread, makes, uses and destroys a window and everything that was drawn in it.
class QUOREglRenderWindow final : public vtkGenericOpenGLRenderWindow {
public:
    static QUOREglRenderWindow* New();
    vtkTypeMacro(QUOREglRenderWindow, vtkGenericOpenGLRenderWindow)

    /// Makes the context when there is none yet.
    void Initialize() override;
    /// Releases what was drawn and destroys the context; the window may be used again.
    void Finalize() override;

    void Render() override;
    void MakeCurrent() override;
    bool IsCurrent() override;
    /// Whether each drawing is copied to the display buffer too, for those who read that: on at first.
    void SetUsingDisplayBuffer(bool used) { this->UsingDisplayBuffer = used; }
    void Frame() override;
    /// 1 when a context stands or could be made.
    int SupportsOpenGL() override;
    /// 1 with a context: no display server stands between it and the driver.
    vtkTypeBool IsDirect() override;
    void OpenGLInitContext() override;

protected:
    QUOREglRenderWindow();
    ~QUOREglRenderWindow() override;

private:
    QUOREglRenderWindow(const QUOREglRenderWindow&) = delete;
    void operator=(const QUOREglRenderWindow&) = delete;

    bool CreateContext();
    void DestroyContext();
    void SetDrawingState();

    void* Context = nullptr;
    bool Failed = false;
    bool UsingDisplayBuffer = true;
};
