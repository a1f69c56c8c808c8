#pragma once

#include "control/panel.h"
#include "platform/Prompt.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

namespace quillport {

/// A line of a session that is no action; the text says why.
class NoAction : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What a session can be told to do.

struct SetProperty {
    enum class Name { HostName, partNumber };
    Name name;
    std::string value;
};
struct GetHostName {};
struct CallConnect {};
struct CallDisconnect {};
struct CallGetFiles {
    std::string filespec;
    std::int32_t attributes = 0;
};
struct TypeText {
    ControlId control;
    std::string text;
};
struct Click {
    ControlId control;
};
struct DoubleClick {
    ControlId control;
};
struct PressKey {
    ControlId control;
    std::int32_t keyCode;
};
struct QueuePick {
    std::optional<std::string> path; ///< the control's path, with "\"; nothing is Cancel
};
struct QueueAnswer {
    Button button;
    std::optional<std::string> title; ///< only for a prompt with this title
};
struct ShowPanel {};

using Action = std::variant<SetProperty, GetHostName, CallConnect, CallDisconnect, CallGetFiles, TypeText,
                            Click, DoubleClick, PressKey, QueuePick, QueueAnswer, ShowPanel>;

/// A write to wait for: one whose text begins so, or whose value is at least this.
struct Trigger {
    ControlId control;
    std::variant<std::string, std::int32_t> wanted;
};

struct SessionLine {
    std::optional<Trigger> when; ///< the action waits for this write; without it, it is carried out at once
    Action action;
};

/// Reads one line of a session. Throws NoAction.
[[nodiscard]] SessionLine parseSessionLine(std::string_view line);

} // namespace quillport
