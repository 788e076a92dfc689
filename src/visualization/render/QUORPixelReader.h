// SPDX-License-Identifier: MIT
#pragma once

class vtkImageData;
class vtkOpenGLRenderWindow;

/// Reads what was drawn last straight from the buffer that it was drawn in.
namespace QUORPixelReader {

/// Into an RGB picture of 8 bits a sample of the window's size, which keeps its memory from one reading to
/// the next. Main thread only; without multisampling.
void read(vtkOpenGLRenderWindow* window, vtkImageData* picture);

} // namespace QUORPixelReader
