#pragma once

#include "harness/World.h"

#include <vector>

namespace quillport::scenarios {

/// What does not hold of the lines below the transcript.
[[nodiscard]] std::vector<LocatedError> endStateProblems(World& world, const std::vector<SourceLine>& lines);

/// Every verb that may stand there.
[[nodiscard]] std::vector<std::string> endStateVerbs();

} // namespace quillport::scenarios
