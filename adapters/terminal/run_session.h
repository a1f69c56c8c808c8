#pragma once

#include "terminal/Session.h"
#include "terminal/commands.h"
#include "terminal/exit_status.h"

#include <iosfwd>
#include <optional>
#include <string>

namespace quillport {

class LineReader;

/// What is there before the first action: assigned as a hosting page would, and typed as an operator would.
struct SessionStart {
    std::optional<std::string> host;
    std::optional<std::string> partNumber;
    std::optional<std::string> userName;
    std::optional<std::string> password;
};

/// Makes the control and carries out the actions of the input until it ends. A line that is no action ends it
/// with wrongUsage and a complaint that names the line.
[[nodiscard]] ExitStatus runSession(Machine machine, Console& console, LineReader& input,
                                    std::ostream& output, Trace trace, const SessionStart& start);

} // namespace quillport
