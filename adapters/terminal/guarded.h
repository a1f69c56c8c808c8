#pragma once

#include "terminal/exit_status.h"

#include <functional>

namespace quillport {

class Console;

/// Runs the program and turns every way in which it can end into the process's exit status, with a line on
/// standard error for all but the good one.
[[nodiscard]] int guarded(Console& console, const std::function<ExitStatus()>& program);

} // namespace quillport
