#pragma once

#include "platform/CommonDialog.h"
#include "terminal/file_types.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quillport {

class Console;

/// What the picker of a command is answered with: a file, or a folder in which the name is taken that the
/// picker comes up with. Paths are the control's, with "\".
struct PickerAnswer {
    enum class Kind { file, folder };
    Kind kind;
    std::string path;
};

/// The folder of a Get as typed on the command line; it need not be there yet. Throws UsageError.
[[nodiscard]] PickerAnswer answerForGet(const std::filesystem::path& folder);
/// Makes the folder of a Get as far as its path leads to the tree of the type, as a person does in a dialog:
/// the control makes no more than the last folder of a template tree. What cannot be made is left to the Get
/// to tell.
void makeWayTo(const PickerAnswer& place, const FileType& type);
/// The file or folder of a Send. Throws UsageError when it is not there or does not fit the type.
[[nodiscard]] PickerAnswer answerForSend(const std::filesystem::path& path, const FileType& type);

/// Throws UsageError when a configuration is to be sent from a folder without documents, such as the one
/// above them: that would delete the RTU's documents and send none.
void requireFilesToSend(const std::filesystem::path& path, const FileType& type);

/// Answers the command's picker, once. When it comes up again, because the operator wants another place than
/// the one that was given, there is no other: it is cancelled.
class TransferPicker final : public PickerDialog {
public:
    TransferPicker(Console& console, PickerAnswer answer) : console_(console), answer_(std::move(answer)) {}
    std::optional<std::string> pick(const PickerRequest& request) override;

private:
    Console& console_;
    PickerAnswer answer_;
    bool used_ = false;
};

} // namespace quillport
