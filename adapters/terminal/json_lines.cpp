#include "terminal/json_lines.h"

#include <nlohmann/json.hpp>

namespace quillport {

std::string jsonLine(const nlohmann::ordered_json& value) {
    constexpr int onOneLine = -1;
    constexpr bool allAsAscii = false;
    return value.dump(onOneLine, ' ', allAsAscii, nlohmann::ordered_json::error_handler_t::replace);
}

void writeText(std::ostream& output, const std::string& text) {
    output << text << std::flush;
    if (!output) {
        throw OutputLost();
    }
}

void writeLine(std::ostream& output, const std::string& line) {
    writeText(output, line + "\n");
}

} // namespace quillport
