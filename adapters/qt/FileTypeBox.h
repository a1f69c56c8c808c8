#pragma once

#include <QComboBox>

namespace quillport {

/// An editable combo box of the panel. It takes what is typed as it stands, completes nothing and adds
/// nothing to its list, and its arrow grows with its text.
class FileTypeBox final : public QComboBox {
public:
    explicit FileTypeBox(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace quillport
