#include "control/QuillportControl.h"

#include "platform/text.h"

#include <limits>

namespace quillport {

void QuillportControl::OnFtpListItem(const std::string& name, DateTime date, std::int32_t size,
                                     std::int32_t itemType, const std::string& /*secondText*/) {
    const HandlerBorder border(error_);
    if (itemType != 0) {
        return;
    }
    const auto show = [&](ControlId nameLabel, ControlId dateLabel, ControlId sizeLabel) {
        panel_.setText(nameLabel, name);
        panel_.setText(dateLabel, FormatRtuDate(date));
        panel_.setText(sizeLabel, std::to_string(size));
    };
    if (listSelector == dataRoot || listSelector == bootRoot) {
        // Not tied to the folder that is listed: on one board both files lie in the same one.
        if (text::right(name, 4) == ".out") {
            show(ControlId::lblApp, ControlId::lblAppDate, ControlId::lblAppSize);
        } else if (text::lower(name) == "vxworks") {
            show(ControlId::lblOs, ControlId::lblOsDate, ControlId::lblOsSize);
        }
    } else if (listSelector == "gui") {
        if (text::right(name, 4) == ".gui") {
            show(ControlId::lblGuiName, ControlId::lblGuiDate, ControlId::lblGuiSize);
        }
    } else if (listSelector == "xml") {
        if (listCount == std::numeric_limits<std::int16_t>::max()) {
            throw Failure(failure_number::overflow, "Overflow");
        }
        ++listCount;
    }
}

} // namespace quillport
