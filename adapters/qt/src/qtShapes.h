#pragma once

#include <QColor>
#include <QIcon>

class QPainter;
class QRectF;

namespace Ko {

/// Small drawings in the colour of text, which fit every theme and resolution.
enum class QtShape {
    Step,
    Group,
    SavedStep,
    SavedGroup,
    Pause,
    Resume,
    Cancel,
    Retry,
    Done,
    Failed,
    Waiting,
    Warning,
    Mixed
};

/// Draws a shape in the pen's colour.
void qtDraw(QPainter& painter, QtShape shape, QRectF const& place);

/// The icon of the desktop's theme, or the shape where the theme has none.
QIcon qtIcon(char const* themeName, QtShape shape);
/// A red that can be read on the background of views, light or dark.
QColor qtFailureColour();
/// The icon of a shape.
QIcon qtIcon(QtShape shape);

} // namespace Ko
