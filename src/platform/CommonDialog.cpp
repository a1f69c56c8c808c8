#include "platform/CommonDialog.h"

#include "platform/failure.h"
#include "platform/paths.h"

namespace quillport {

void CommonDialog::show(PickerKind kind) {
    const std::optional<std::string> answer = dialog_.pick({kind, title_, fileName_, defaultExt_});
    if (!answer) {
        fileTitle_.clear();
        if (cancelError_) {
            throw Failure(failure_number::pickerCancelled, "Cancel was selected.");
        }
        return;
    }
    fileName_ = *answer;
    fileTitle_ = paths::fileName(*answer);
    try {
        files_.makeCurrent(paths::parentFolder(*answer) + "\\");
    } catch (const Failure&) {
        // The operator may name a folder that is still to be made: the current folder then stays.
    }
}

} // namespace quillport
