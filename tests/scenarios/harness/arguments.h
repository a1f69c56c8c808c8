#pragma once

#include "control/panel.h"
#include "harness/ControlUnderTest.h"
#include "harness/words.h"

#include <cstdint>
#include <string>
#include <vector>

/// Arguments that several verbs take. What is malformed is a LineError.
namespace quillport::scenarios {

[[nodiscard]] std::string takeRemotePath(Words& words);
[[nodiscard]] std::string takeLocalPath(Words& words);
[[nodiscard]] std::int64_t takeSize(Words& words);
/// All that follows: readonly, hidden, system; nothing for a normal file.
[[nodiscard]] std::int32_t takeAttributes(Words& words);
[[nodiscard]] std::string attributesText(std::int32_t attributes);
[[nodiscard]] ControlId takeControl(Words& words);
/// The last two words of a line: a number and a description.
[[nodiscard]] Failure takeFailure(Words& words);
[[nodiscard]] ControlUnderTest::Member takeMember(Words& words);

} // namespace quillport::scenarios
