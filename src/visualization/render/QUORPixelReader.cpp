// SPDX-License-Identifier: MIT
#include "QUORPixelReader.h"

#include <vtkImageData.h>
#include <vtkOpenGLFramebufferObject.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkOpenGLState.h>
#include <vtk_glew.h>

void QUORPixelReader::read(vtkOpenGLRenderWindow* window, vtkImageData* picture) {
    const int width = window->GetSize()[0];
    const int height = window->GetSize()[1];
    const int* size = picture->GetDimensions();
    if (size[0] != width || size[1] != height || picture->GetNumberOfScalarComponents() != 3) {
        picture->SetDimensions(width, height, 1);
        picture->AllocateScalars(VTK_UNSIGNED_CHAR, 3);
    }
    window->MakeCurrent();
    vtkOpenGLState* state = window->GetState();
    state->PushReadFramebufferBinding();
    vtkOpenGLFramebufferObject* drawn = window->GetRenderFramebuffer();
    drawn->Bind(GL_READ_FRAMEBUFFER);
    drawn->ActivateReadBuffer(0);
    state->vtkglPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, picture->GetScalarPointer());
    state->PopReadFramebufferBinding();
    picture->Modified();
}
