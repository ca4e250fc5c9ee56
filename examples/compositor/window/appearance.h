#pragma once

class QApplication;

namespace compositor::window {

/// Light or dark colours.
enum class Scheme { System, Light, Dark };

/// Gives all windows the same style, in light or dark colours. `System` follows the palette of the desktop's theme and, where that has
/// none, the settings for dark themes that desktops share.
void applyAppearance(QApplication& application, Scheme scheme);

} // namespace compositor::window
