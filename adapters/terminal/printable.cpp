#include "terminal/printable.h"

#include <algorithm>

namespace quillport {

namespace {

bool isControl(unsigned char byte) {
    return byte < 0x20 || byte == 0x7f;
}

/// U+0080 to U+009F, which terminals obey as well.
bool isWideControl(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]) == 0xc2 && index + 1 < text.size() &&
           static_cast<unsigned char>(text[index + 1]) >= 0x80 &&
           static_cast<unsigned char>(text[index + 1]) < 0xa0;
}

} // namespace

std::string printable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char byte = text[index];
        const bool carriageReturn = byte == '\r' && index + 1 < text.size() && text[index + 1] == '\n';
        if (carriageReturn) {
            continue;
        }
        if (isWideControl(text, index)) {
            shown += '?';
            ++index;
        } else {
            shown += byte != '\n' && isControl(static_cast<unsigned char>(byte)) ? '?' : byte;
        }
    }
    return shown;
}

std::string printableLine(std::string_view text) {
    std::string line = printable(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

} // namespace quillport
