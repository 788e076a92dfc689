// SPDX-License-Identifier: MIT
#include "QUORStaticSnapshot.h"

#include <vtkCallbackCommand.h>
#include <vtkOpenGLFramebufferObject.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkOpenGLState.h>
#include <vtkRenderer.h>
#include <vtk_glew.h>

QUORStaticSnapshot::QUORStaticSnapshot(vtkRenderer* statics, vtkRenderer* rest)
    : _statics(statics), _rest(rest), _starter(vtkSmartPointer<vtkCallbackCommand>::New()) {
    rest->PreserveColorBufferOn();
    rest->PreserveDepthBufferOn();
    _starter->SetClientData(this);
    _starter->SetCallback([](vtkObject*, unsigned long, void* self, void*) {
        static_cast<QUORStaticSnapshot*>(self)->onRestStarts();
    });
    _starterTag = rest->AddObserver(vtkCommand::StartEvent, _starter);
}

QUORStaticSnapshot::~QUORStaticSnapshot() {
    _rest->RemoveObserver(_starterTag);
    drop();
}

vtkOpenGLRenderWindow* QUORStaticSnapshot::window() const {
    return vtkOpenGLRenderWindow::SafeDownCast(_rest->GetRenderWindow());
}

void QUORStaticSnapshot::prepare(const QByteArray& key) {
    _wantedKey = key;
    const int* size = window()->GetSize();
    if (_kept != nullptr && (key.isEmpty() || size[0] != _size[0] || size[1] != _size[1])) {
        drop();
    }
    _statics->SetDraw(!isValid());
}

void QUORStaticSnapshot::drop() {
    if (_kept != nullptr && window() != nullptr) {
        _kept->ReleaseGraphicsResources(window());
    }
    _kept = nullptr;
    _heldKey.clear();
}

void QUORStaticSnapshot::onRestStarts() {
    if (isValid()) {
        copy(_kept, window()->GetRenderFramebuffer());
    } else if (!_wantedKey.isEmpty() && provideFramebuffer()) {
        copy(window()->GetRenderFramebuffer(), _kept);
        _heldKey = _wantedKey;
    }
}

bool QUORStaticSnapshot::provideFramebuffer() {
    if (_kept != nullptr) {
        return true;
    }
    const int* size = window()->GetSize();
    auto kept = vtkSmartPointer<vtkOpenGLFramebufferObject>::New();
    kept->SetContext(window());
    vtkOpenGLState* state = window()->GetState();
    state->PushFramebufferBindings();
    // The formats of the window's own buffers: a copy of depth needs the same on both sides.
    const bool complete =
        kept->PopulateFramebuffer(size[0], size[1], true, 1, VTK_UNSIGNED_CHAR, true, 32, 0);
    state->PopFramebufferBindings();
    if (complete) {
        _kept = kept;
        _size = {size[0], size[1]};
    }
    return complete;
}

void QUORStaticSnapshot::copy(vtkOpenGLFramebufferObject* from, vtkOpenGLFramebufferObject* to) {
    vtkOpenGLState* state = window()->GetState();
    const vtkOpenGLState::ScopedglEnableDisable scissor(state, GL_SCISSOR_TEST);
    state->vtkglDisable(GL_SCISSOR_TEST);
    state->PushFramebufferBindings();
    from->Bind(GL_READ_FRAMEBUFFER);
    from->ActivateReadBuffer(0);
    to->Bind(GL_DRAW_FRAMEBUFFER);
    to->ActivateDrawBuffer(0);
    const int w = _size[0];
    const int h = _size[1];
    state->vtkglBlitFramebuffer(0, 0, w, h, 0, 0, w, h, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT,
                                GL_NEAREST);
    state->PopFramebufferBindings();
}
