#include "qt/CaptionLabel.h"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

namespace quillport {

namespace {

/// A caption with such a run in it places its words by blanks.
const QLatin1String blankRun("  ");

/// The blank of the bold font that such captions were laid out in: 4 pixels where the em has 11.
constexpr double designBlank = 4.0 / 11.0;

/// How narrow a font may be set, in percent: less is hard to read.
constexpr int narrowest = 88;

} // namespace

CaptionLabel::CaptionLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

void CaptionLabel::setCaption(const QString& caption) {
    setText(caption);
    updateToolTip();
}

bool CaptionLabel::isCut() const {
    return !text().contains(blankRun) &&
           QFontMetrics(fittingFont()).horizontalAdvance(text()) > contentsRect().width();
}

QFont CaptionLabel::fittingFont() const {
    QFont narrow = font();
    if (fontMetrics().horizontalAdvance(text()) > contentsRect().width()) {
        narrow.setStretch(narrowest);
    }
    return narrow;
}

void CaptionLabel::updateToolTip() {
    setToolTip(isCut() ? QStringLiteral("<qt>%1</qt>").arg(text().toHtmlEscaped()) : QString());
}

void CaptionLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    if (text().contains(blankRun)) {
        drawSpaced(painter);
        return;
    }
    painter.setFont(fittingFont());
    const QString shown = painter.fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
    painter.drawText(contentsRect(), static_cast<int>(alignment()) | Qt::TextSingleLine, shown);
}

// Whatever font stands in for the design's own, the words stay where its blanks would have put them.
void CaptionLabel::drawSpaced(QPainter& painter) const {
    const QFontMetricsF metrics(font());
    const double blank = font().pixelSize() * designBlank;
    double left = contentsRect().left();
    for (const QString& word : text().split(QLatin1Char(' '))) {
        const QRectF place(left, contentsRect().top(), metrics.horizontalAdvance(word) + blank,
                           contentsRect().height());
        painter.drawText(place, static_cast<int>(alignment()) | Qt::TextSingleLine | Qt::TextDontClip, word);
        left += metrics.horizontalAdvance(word) + blank;
    }
}

void CaptionLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateToolTip();
    }
}

void CaptionLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void CaptionLabel::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit doubleClicked();
    }
}

} // namespace quillport
