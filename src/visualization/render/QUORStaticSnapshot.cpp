// SPDX-License-Identifier: MIT
#include "QUORStaticSnapshot.h"

#include <QDataStream>
#include <QIODevice>

#include <vtkActor.h>
#include <vtkAssemblyNode.h>
#include <vtkAssemblyPath.h>
#include <vtkCallbackCommand.h>
#include <vtkCamera.h>
#include <vtkLight.h>
#include <vtkLightCollection.h>
#include <vtkMapper.h>
#include <vtkMatrix4x4.h>
#include <vtkOpenGLFramebufferObject.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkOpenGLState.h>
#include <vtkPolyData.h>
#include <vtkPropCollection.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkTexture.h>
#include <vtk_glew.h>

#include <algorithm>
#include <iterator>

namespace {

/// A copy each for the sites that take turns, as far as the memory allows.
constexpr std::size_t MOST_COPIES = 16;
constexpr std::size_t MOST_BYTES = 256U << 20U;
constexpr std::size_t BYTES_PER_PIXEL = 8;

void addNumbers(QDataStream& key, const double* values, int count) {
    for (int i = 0; i < count; ++i) {
        key << values[i];
    }
}

void addObject(QDataStream& key, vtkObject* object) {
    key << quintptr(object) << quint64(object != nullptr ? object->GetMTime() : 0);
}

/// Drawing in an assembly touches the actor's own time of change, and giving its buffers back that of mapper
/// and texture, so that only what they are made of counts.
void addActor(QDataStream& key, vtkActor* actor) {
    vtkMapper* mapper = actor->GetMapper();
    addObject(key, actor->GetProperty());
    key << quintptr(mapper) << quintptr(actor->GetTexture());
    addObject(key, mapper != nullptr ? mapper->GetInputDataObject(0, 0) : nullptr);
    addObject(key, actor->GetTexture() != nullptr ? actor->GetTexture()->GetInputDataObject(0, 0) : nullptr);
}

/// False when nothing of the prop is visible.
bool addProp(QDataStream& key, vtkProp* prop) {
    bool any = false;
    prop->InitPathTraversal();
    while (vtkAssemblyPath* path = prop->GetNextPath()) {
        vtkAssemblyNode* leaf = path->GetLastNode();
        vtkProp* part = leaf->GetViewProp();
        if (part->GetVisibility() == 0) {
            continue;
        }
        any = true;
        key << quintptr(part);
        if (leaf->GetMatrix() != nullptr) {
            addNumbers(key, leaf->GetMatrix()->GetData(), 16);
        }
        if (auto* actor = vtkActor::SafeDownCast(part)) {
            addActor(key, actor);
        } else {
            key << quint64(part->GetRedrawMTime());
        }
    }
    return any;
}

void addView(QDataStream& key, vtkRenderer* renderer) {
    vtkCamera* camera = renderer->GetActiveCamera();
    addNumbers(key, camera->GetPosition(), 3);
    addNumbers(key, camera->GetFocalPoint(), 3);
    addNumbers(key, camera->GetViewUp(), 3);
    addNumbers(key, camera->GetClippingRange(), 2);
    key << camera->GetViewAngle();
    addNumbers(key, renderer->GetBackground(), 3);
    vtkCollectionSimpleIterator position;
    renderer->GetLights()->InitTraversal(position);
    while (vtkLight* light = renderer->GetLights()->GetNextLight(position)) {
        addNumbers(key, light->GetPosition(), 3);
        addNumbers(key, light->GetFocalPoint(), 3);
        addNumbers(key, light->GetDiffuseColor(), 3);
        key << light->GetIntensity() << light->GetSwitch();
    }
}

/// Everything that the renderer's pixels depend on; empty when it draws nothing.
QByteArray makeKey(vtkRenderer* renderer, const std::array<int, 2>& size) {
    QByteArray bytes;
    QDataStream key(&bytes, QIODevice::WriteOnly);
    key << size[0] << size[1];
    bool any = false;
    vtkCollectionSimpleIterator position;
    renderer->GetViewProps()->InitTraversal(position);
    while (vtkProp* prop = renderer->GetViewProps()->GetNextProp(position)) {
        any = (prop->GetVisibility() != 0 && addProp(key, prop)) || any;
    }
    addView(key, renderer);
    return any ? bytes : QByteArray();
}

} // namespace

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

void QUORStaticSnapshot::prepare() {
    const int* size = window()->GetSize();
    _size = {size[0], size[1]};
    _wantedKey = makeKey(_statics, _size);
    const auto found =
        std::find_if(_kept.begin(), _kept.end(), [this](const Copy& copy) { return copy.key == _wantedKey; });
    if (found != _kept.end()) {
        std::rotate(_kept.begin(), found, std::next(found));
    }
    _statics->SetDraw(!isValid());
}

void QUORStaticSnapshot::drop() {
    keepAtMost(0);
}

bool QUORStaticSnapshot::isValid() const {
    return !_wantedKey.isEmpty() && !_kept.empty() && _kept.front().key == _wantedKey;
}

void QUORStaticSnapshot::onRestStarts() {
    if (isValid()) {
        copy(_kept.front().buffers, window()->GetRenderFramebuffer());
        return;
    }
    if (_wantedKey.isEmpty()) {
        return;
    }
    if (auto buffers = takeFramebuffer()) {
        copy(window()->GetRenderFramebuffer(), buffers);
        _kept.insert(_kept.begin(), {_wantedKey, _size, buffers});
    }
}

std::size_t QUORStaticSnapshot::Copy::bytes() const {
    return std::size_t(size[0]) * std::size_t(size[1]) * BYTES_PER_PIXEL;
}

void QUORStaticSnapshot::keepAtMost(std::size_t count) {
    while (_kept.size() > count) {
        if (window() != nullptr) {
            _kept.back().buffers->ReleaseGraphicsResources(window());
        }
        _kept.pop_back();
    }
}

vtkSmartPointer<vtkOpenGLFramebufferObject> QUORStaticSnapshot::takeFramebuffer() {
    std::size_t bytes = Copy{{}, _size, nullptr}.bytes();
    std::size_t most = 0;
    while (most < _kept.size() && most + 1 < MOST_COPIES && bytes + _kept[most].bytes() <= MOST_BYTES) {
        bytes += _kept[most].bytes();
        ++most;
    }
    if (most < _kept.size() && _kept[most].size == _size) {
        vtkSmartPointer<vtkOpenGLFramebufferObject> oldest = _kept[most].buffers;
        _kept.erase(_kept.begin() + std::ptrdiff_t(most));
        keepAtMost(most);
        return oldest;
    }
    keepAtMost(most);
    auto buffers = vtkSmartPointer<vtkOpenGLFramebufferObject>::New();
    buffers->SetContext(window());
    vtkOpenGLState* state = window()->GetState();
    state->PushFramebufferBindings();
    // The formats of the window's own buffers: a copy of depth needs the same on both sides.
    const bool complete =
        buffers->PopulateFramebuffer(_size[0], _size[1], true, 1, VTK_UNSIGNED_CHAR, true, 32, 0);
    state->PopFramebufferBindings();
    return complete ? buffers : nullptr;
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
