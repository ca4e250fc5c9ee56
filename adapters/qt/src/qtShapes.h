#pragma once

#include <QColor>
#include <QIcon>

class QPainter;
class QRectF;

namespace Ko {

/// Small drawings in the colour of text, which fit every theme and resolution.
enum class QtShape { Step, Group, Saved, Pause, Resume, Cancel, Retry, Done, Failed, Waiting, Mixed };

/// Draws a shape in the pen's colour.
void qtDraw(QPainter& painter, QtShape shape, QRectF const& place);

/// A red that can be read on the background of views, light or dark.
QColor qtFailureColour();
/// The icon of a shape; dimmed, as that of something that is disabled.
QIcon qtIcon(QtShape shape, bool isDimmed = false);

} // namespace Ko
