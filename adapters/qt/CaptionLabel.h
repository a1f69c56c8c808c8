#pragma once

#include <QLabel>

namespace quillport {

/// A label of the panel: one line of plain text. A caption that is longer than the label is set narrower; if
/// that is not enough it ends in an ellipsis, and the tool tip shows the whole of it.
class CaptionLabel final : public QLabel {
    Q_OBJECT

public:
    explicit CaptionLabel(QWidget* parent);

    void setCaption(const QString& caption);
    /// Whether the caption ends in an ellipsis.
    [[nodiscard]] bool isCut() const;

signals:
    void doubleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void updateToolTip();
    [[nodiscard]] QFont fittingFont() const;
    void drawSpaced(QPainter& painter) const;
};

} // namespace quillport
