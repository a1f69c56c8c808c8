#pragma once

#include <QGroupBox>

namespace quillport {

/// A frame of the panel: an etched line with the caption set into its top edge. What lies in it is placed
/// from the widget's own corner, line and caption included.
class CaptionFrame final : public QGroupBox {
public:
    explicit CaptionFrame(QWidget* parent) : QGroupBox(parent) {}

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quillport
