#pragma once

#include "harness/World.h"

#include <string>
#include <vector>

namespace quillport::scenarios {

/// Carries out one line of what is given and done. What is wrong with it is a LineError.
void runAction(World& world, const Action& action);

/// Groups lines with those indented below them, and refuses unknown verbs before anything is done. Raises
/// LocatedError.
[[nodiscard]] std::vector<Action> actionsOf(const std::vector<SourceLine>& lines);

/// Every verb that may stand above the transcript.
[[nodiscard]] std::vector<std::string> actionVerbs();

} // namespace quillport::scenarios
