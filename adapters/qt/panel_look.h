#pragma once

#include "control/panel.h"

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QRect>
#include <QString>

/// What the panel looks like, whatever theme the desktop has. A scale of 1 is the panel's normal size.
namespace quillport {

[[nodiscard]] QColor qtColour(Colour colour);

/// Pixels of a length that has this many at normal size; never less than one.
[[nodiscard]] int scaledPixels(double pixels, double scale);

/// Where a control lies in the widget that holds it. Edges are rounded, not sizes, so that neighbours meet.
[[nodiscard]] QRect scaledPosition(const Twips& position, double scale);

[[nodiscard]] QFont panelFont(ControlStyle style, double scale);

/// Every role in every state, so that nothing of the desktop's own palette shows through.
[[nodiscard]] QPalette panelPalette(ControlStyle style);

/// How the boxes, buttons, bar and tool tips of the panel are drawn. Teal buttons have the property "teal".
[[nodiscard]] QString panelStyleSheet(double scale);

} // namespace quillport
