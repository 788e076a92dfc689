// SPDX-License-Identifier: MIT
#pragma once

class QMainWindow;

/// Size, place and panels of the window, in a settings file of the viewer's own.
namespace QUORWindowMemory {

/// False when there is nothing to restore.
bool restore(QMainWindow& window);
void store(const QMainWindow& window);

} // namespace QUORWindowMemory
