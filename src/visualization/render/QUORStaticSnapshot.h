// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

#include <QByteArray>

#include <array>
#include <cstddef>
#include <vector>

class vtkCallbackCommand;
class vtkOpenGLFramebufferObject;
class vtkOpenGLRenderWindow;
class vtkRenderer;

/// Draws the static part of a scene once. Of two renderers in one window, `statics` comes first and clears,
/// `rest` draws over it and keeps colour and depth. After the first has drawn, both buffers are copied to a
/// framebuffer of our own; while nothing changes that its pixels depend on (geometry, textures, places,
/// camera with its near and far plane, lights, background, window size), later images copy them back and
/// leave the first renderer out. The pixels are those of a full drawing. A few copies are kept, the last
/// used ones, so that sites and views which take turns all find theirs; their memory is bounded.
///
/// Owned by whoever owns the renderers; the window must have its last render behind it when this dies.
/// Main thread only. Without multisampling, which a copy of depth would not survive.
class QUORStaticSnapshot {
public:
    QUORStaticSnapshot(vtkRenderer* statics, vtkRenderer* rest);
    ~QUORStaticSnapshot();
    QUORStaticSnapshot(const QUORStaticSnapshot&) = delete;
    QUORStaticSnapshot& operator=(const QUORStaticSnapshot&) = delete;

    /// Before each render, when camera and props are as they will be drawn.
    void prepare();
    /// Gives the copies and their memory back.
    void drop();
    /// True when the next render copies instead of drawing.
    bool isValid() const;

private:
    struct Copy {
        QByteArray key;
        std::array<int, 2> size{};
        vtkSmartPointer<vtkOpenGLFramebufferObject> buffers;

        std::size_t bytes() const;
    };

    void onRestStarts();
    vtkOpenGLRenderWindow* window() const;
    void keepAtMost(std::size_t count);
    /// Null when the window can give none. Gives up the oldest copies where there are enough.
    vtkSmartPointer<vtkOpenGLFramebufferObject> takeFramebuffer();
    void copy(vtkOpenGLFramebufferObject* from, vtkOpenGLFramebufferObject* to);

    vtkRenderer* _statics;
    vtkRenderer* _rest;
    vtkSmartPointer<vtkCallbackCommand> _starter;
    unsigned long _starterTag = 0;
    std::vector<Copy> _kept; ///< last used first
    std::array<int, 2> _size{};
    QByteArray _wantedKey;
};
