// SPDX-License-Identifier: MIT
#include "QUOREglRenderWindow.h"

#include "QUOREglDisplay.h"

#include <vtkObjectFactory.h>
#include <vtkOpenGLState.h>
#include <vtkRenderer.h>
#include <vtkRendererCollection.h>
#include <vtk_glew.h>

#include <EGL/egl.h>

#include <array>

vtkStandardNewMacro(QUOREglRenderWindow)

QUOREglRenderWindow::QUOREglRenderWindow() {
    this->SetOffScreenRendering(1);
    this->FrameBlitMode = NoBlit;
    this->OwnContext = 1;
    this->Mapped = 0;
    this->MultiSamples = 0;
}

QUOREglRenderWindow::~QUOREglRenderWindow() {
    this->Finalize();
    vtkCollectionSimpleIterator position;
    this->Renderers->InitTraversal(position);
    while (vtkRenderer* renderer = this->Renderers->GetNextRenderer(position)) {
        renderer->SetRenderWindow(nullptr);
    }
}

bool QUOREglRenderWindow::CreateContext() {
    const QUOREglDisplay& display = QUOREglDisplay::Instance();
    if (this->Failed) {
        return false;
    }
    if (display.isOpen()) {
        this->Context = display.createContext();
    }
    if (this->Context == nullptr) {
        this->Failed = true;
        vtkErrorMacro(
            "No OpenGL context: " << (display.isOpen() ? "EGL gave none" : qPrintable(display.getError())));
    }
    return this->Context != nullptr;
}

void QUOREglRenderWindow::DestroyContext() {
    void* display = QUOREglDisplay::Instance().getDisplay();
    if (this->IsCurrent()) {
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    eglDestroyContext(display, this->Context);
    this->Context = nullptr;
    this->Initialized = false;
}

void QUOREglRenderWindow::Initialize() {
    if (this->Context != nullptr || !this->CreateContext()) {
        return;
    }
    this->OpenGLInit();
    if (!this->Initialized) {
        this->Failed = true;
        this->DestroyContext();
        return;
    }
    this->SetDrawingState();
}

// The state that a window on a display starts with; the generic window takes the context's raw state.
void QUOREglRenderWindow::SetDrawingState() {
    vtkOpenGLState* state = this->GetState();
    state->Reset();
    state->vtkglDepthFunc(GL_LEQUAL);
    state->vtkglEnable(GL_DEPTH_TEST);
    state->vtkglEnable(GL_BLEND);
    state->vtkglBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

void QUOREglRenderWindow::OpenGLInitContext() {
    this->MakeCurrent();
    if (!this->IsCurrent() || this->Initialized) {
        return;
    }
    this->ContextCreationTime.Modified();
    const GLenum result = glewInit();
    this->GlewInitValid = result == GLEW_OK || result == GLEW_ERROR_NO_GLX_DISPLAY;
    if (!this->GlewInitValid || !GLEW_VERSION_3_2) {
        vtkErrorMacro("No OpenGL 3.2: " << reinterpret_cast<const char*>(glewGetErrorString(result)));
        return;
    }
    this->Initialized = true;
    std::array<float, 2> widths{1.0F, 1.0F};
    glGetFloatv(this->LineSmoothing ? GL_SMOOTH_LINE_WIDTH_RANGE : GL_ALIASED_LINE_WIDTH_RANGE,
                widths.data());
    this->MaximumHardwareLineWidth = widths[1];
}

void QUOREglRenderWindow::Finalize() {
    if (this->Context == nullptr) {
        return;
    }
    this->MakeCurrent();
    this->Superclass::Finalize();
    this->DestroyContext();
}

void QUOREglRenderWindow::Render() {
    this->MakeCurrent();
    if (this->Initialized) {
        this->Superclass::Render();
    }
}

void QUOREglRenderWindow::Frame() {
    if (this->UsingDisplayBuffer) {
        this->Superclass::Frame();
    }
}

void QUOREglRenderWindow::MakeCurrent() {
    if (this->Context == nullptr) {
        this->Initialize();
    }
    if (this->Context != nullptr && !this->IsCurrent()) {
        eglMakeCurrent(QUOREglDisplay::Instance().getDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE,
                       this->Context);
    }
}

bool QUOREglRenderWindow::IsCurrent() {
    return this->Context != nullptr && eglGetCurrentContext() == this->Context;
}

int QUOREglRenderWindow::SupportsOpenGL() {
    this->MakeCurrent();
    return this->Initialized ? 1 : 0;
}

vtkTypeBool QUOREglRenderWindow::IsDirect() {
    return this->SupportsOpenGL();
}
