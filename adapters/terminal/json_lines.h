#pragma once

#include "platform/failure.h"

#include <nlohmann/json_fwd.hpp>

#include <ostream>
#include <string>

namespace quillport {

/// On one line, and valid UTF-8 whatever its strings hold: a byte that belongs to no valid sequence becomes
/// U+FFFD.
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& value);

/// Whoever read the program's output has gone, or the disk it goes to is full: the program ends.
class OutputLost : public ProgramStop {
public:
    [[nodiscard]] const char* what() const noexcept override {
        return "standard output cannot be written any more";
    }
};

/// Writes a text and flushes it. Throws OutputLost.
void writeText(std::ostream& output, const std::string& text);
/// The same with a line end behind the text.
void writeLine(std::ostream& output, const std::string& line);

} // namespace quillport
