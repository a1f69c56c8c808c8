#include "platform/Prompt.h"

namespace quillport {

std::string_view buttonText(Button button) {
    switch (button) {
    case Button::OK:
        return "OK";
    case Button::Cancel:
        return "Cancel";
    case Button::Yes:
        return "Yes";
    case Button::No:
        return "No";
    case Button::Retry:
        return "Retry";
    }
    return "";
}

} // namespace quillport
