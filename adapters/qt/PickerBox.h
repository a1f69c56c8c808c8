#pragma once

#include "platform/CommonDialog.h"

#include <QFileDialog>

#include <filesystem>

namespace quillport {

/// The open or save dialog of one picker request, starting in the current folder. objectName is "picker".
///
/// It is always the toolkit's own: what desktops put in its place asks before it overwrites a file, whatever
/// it is told, or takes no name that is not there, and the control's pickers are there to confirm a folder.
class PickerBox final : public QFileDialog {
public:
    PickerBox(const PickerRequest& request, QWidget* parent);

    [[nodiscard]] std::filesystem::path answer() const;

    /// A name that is a folder's leads into that folder, with the start name once more.
    void accept() override;

private:
    void startWith(const QString& fileName);

    QString startName_;
};

} // namespace quillport
