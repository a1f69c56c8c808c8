#include "qt/CaptionFrame.h"

#include <QPainter>

#include <algorithm>

namespace quillport {

void CaptionFrame::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QFontMetrics metrics = fontMetrics();
    // The em is the measure of all that belongs to the caption, so that the frame grows with its text.
    const int em = font().pixelSize();
    const int line = std::max(1, qRound(em / 11.0));
    const int captionLeft = qRound(em * 0.8);
    const int gap = qRound(em * 0.25);

    const QRect edge = rect().adjusted(0, metrics.height() / 2, -2 * line, -2 * line);
    const auto etch = [&](const QColor& colour, int offset) {
        painter.setPen(QPen(colour, line, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(QRectF(edge).translated(offset + line / 2.0, offset + line / 2.0));
    };
    etch(palette().color(QPalette::Light), line);
    etch(palette().color(QPalette::Mid), 0);

    if (title().isEmpty()) {
        return;
    }
    const QRect caption(captionLeft, 0, metrics.horizontalAdvance(title()) + 2 * gap, metrics.height());
    // Only the line gives way: the frame above may reach down to here.
    painter.fillRect(QRect(caption.left(), edge.top(), caption.width(), 2 * line),
                     palette().color(QPalette::Window));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(caption.adjusted(gap, 0, 0, 0), Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine,
                     title());
}

} // namespace quillport
