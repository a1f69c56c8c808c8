#include "qt/FileTypeBox.h"

#include <QPainter>
#include <QPolygonF>
#include <QStyleOptionComboBox>

namespace quillport {

FileTypeBox::FileTypeBox(QWidget* parent) : QComboBox(parent) {
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
}

void FileTypeBox::paintEvent(QPaintEvent* event) {
    QComboBox::paintEvent(event);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRectF button =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
    const double half = font().pixelSize() * 0.32;
    const QPointF tip = button.center() + QPointF(0.5, half / 2.0 + 0.5);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Text));
    painter.drawPolygon(QPolygonF({tip, tip + QPointF(half, -half), tip + QPointF(-half, -half)}));
}

} // namespace quillport
