#pragma once

#include "window/mainWindow.h"

#include <iosfwd>

namespace compositor::window {

/// Fills the document with eight layers of 4096 x 4096, drags some of them by events of the mouse, and writes how long the frames took:
/// from one painted frame that shows the drag to the next one.
void measureDrags(MainWindow& window, std::ostream& output);

} // namespace compositor::window
