#pragma once

#include "harness/ScenarioFile.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quillport::scenarios {

/// A transcript to be put between the two bars of a step.
struct Rewrite {
    std::filesystem::path file;
    int firstBar = 0;
    int lastBar = 0;
    std::vector<std::string> lines;
};

enum class Expectations { compare, rewrite };

/// What became of a scenario.
struct Outcome {
    bool held = true;
    int line = 0;       ///< where to look first, when it did not hold
    std::string report; ///< for people: file and line, the Why, what differs, and all that happened
    std::vector<Rewrite> rewrites;
};

/// Runs a scenario in a world of its own. With Expectations::rewrite a transcript that differs is no fault
/// but a rewrite, except in a scenario that comes from a row.
[[nodiscard]] Outcome run(const Scenario& scenario, Expectations expectations = Expectations::compare);

/// Puts transcripts into their files.
void apply(const std::vector<Rewrite>& rewrites);

} // namespace quillport::scenarios
