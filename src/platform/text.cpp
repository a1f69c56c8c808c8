#include "platform/text.h"

#include "platform/failure.h"

#include <algorithm>
#include <vector>

namespace quillport::text {

namespace {

/// Length in bytes of the character at the start of the text; 1 for a byte that starts no valid sequence.
std::size_t characterBytes(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::size_t bytes = 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        bytes = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        bytes = 3;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        bytes = 4;
    }
    if (text.size() < bytes) {
        return 1;
    }
    const bool continued =
        std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(bytes),
                    [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; });
    return continued ? bytes : 1;
}

/// Offset in bytes behind the first `count` characters, at most the text's size.
std::size_t offsetBehind(std::string_view text, std::int32_t count) {
    std::size_t offset = 0;
    for (std::int32_t passed = 0; passed < count && offset < text.size(); ++passed) {
        offset += characterBytes(text.substr(offset));
    }
    return offset;
}

void requireCount(std::int32_t count) {
    if (count < 0) {
        throw Failure(failure_number::invalidCall, "Invalid procedure call or argument");
    }
}

char32_t decode(std::string_view character) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(character[index]); };
    switch (character.size()) {
    case 2:
        return static_cast<char32_t>(((byte(0) & 0x1FU) << 6U) | (byte(1) & 0x3FU));
    case 1:
        return byte(0);
    default:
        return 0; // no letter of the blocks below is longer
    }
}

void appendTwoBytes(std::string& out, char32_t code) {
    out += static_cast<char>(0xC0U | (code >> 6U));
    out += static_cast<char>(0x80U | (code & 0x3FU));
}

/// Letters of these blocks stand a fixed distance apart, the capital first.
struct CaseBlock {
    char32_t first;
    char32_t last;
    char32_t distance;
};
constexpr CaseBlock capitalBlocks[] = {
    {'A', 'Z', 32},       {0x00C0, 0x00D6, 32}, {0x00D8, 0x00DE, 32}, {0x0391, 0x03A1, 32},
    {0x03A3, 0x03A9, 32}, {0x0400, 0x040F, 80}, {0x0410, 0x042F, 32},
};
/// In these blocks capitals and small letters alternate; a capital has the parity of the block's first.
struct PairBlock {
    char32_t first;
    char32_t last;
};
constexpr PairBlock pairBlocks[] = {
    {0x0100, 0x012F}, {0x0132, 0x0137}, {0x0139, 0x0148},
    {0x014A, 0x0177}, {0x0179, 0x017E}, {0x0460, 0x0481},
};

char32_t lowerCode(char32_t code) {
    for (const CaseBlock& block : capitalBlocks) {
        if (code >= block.first && code <= block.last) {
            return code + block.distance;
        }
    }
    for (const PairBlock& block : pairBlocks) {
        if (code >= block.first && code <= block.last && (code - block.first) % 2 == 0) {
            return code + 1;
        }
    }
    return code;
}

char32_t upperCode(char32_t code) {
    for (const CaseBlock& block : capitalBlocks) {
        if (code >= block.first + block.distance && code <= block.last + block.distance) {
            return code - block.distance;
        }
    }
    for (const PairBlock& block : pairBlocks) {
        if (code >= block.first && code <= block.last && (code - block.first) % 2 == 1) {
            return code - 1;
        }
    }
    return code;
}

template <typename Mapping>
std::string mapped(std::string_view text, Mapping mapping) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        const std::string_view character = text.substr(offset, characterBytes(text.substr(offset)));
        offset += character.size();
        const char32_t before = decode(character);
        const char32_t after = mapping(before);
        // A byte beyond ASCII that stands alone is no letter, whatever its value.
        const bool loneByte = character.size() == 1 && before >= 0x80;
        if (after == before || loneByte || character.size() > 2) {
            out += character;
        } else if (character.size() == 1) {
            out += static_cast<char>(after);
        } else {
            appendTwoBytes(out, after);
        }
    }
    return out;
}

std::int32_t positionOf(std::string_view text, std::size_t offset) {
    return offset == std::string_view::npos ? 0 : length(text.substr(0, offset)) + 1;
}

} // namespace

std::int32_t length(std::string_view text) {
    std::int32_t count = 0;
    for (std::size_t offset = 0; offset < text.size(); offset += characterBytes(text.substr(offset))) {
        ++count;
    }
    return count;
}

std::string left(std::string_view text, std::int32_t count) {
    requireCount(count);
    return std::string(text.substr(0, offsetBehind(text, count)));
}

std::string right(std::string_view text, std::int32_t count) {
    requireCount(count);
    return behind(text, std::max(length(text) - count, 0));
}

std::string behind(std::string_view text, std::int32_t count) {
    requireCount(count);
    return std::string(text.substr(offsetBehind(text, count)));
}

std::int32_t find(std::string_view text, std::string_view wanted, Case sense) {
    if (sense == Case::folded) {
        return text::find(lower(text), lower(wanted));
    }
    return positionOf(text, text.find(wanted));
}

std::int32_t findLast(std::string_view text, std::string_view wanted, Case sense) {
    if (sense == Case::folded) {
        return text::findLast(lower(text), lower(wanted));
    }
    return positionOf(text, text.rfind(wanted));
}

bool contains(std::string_view text, std::string_view wanted) {
    return text.find(wanted) != std::string_view::npos;
}

std::string replace(std::string_view text, std::string_view wanted, std::string_view by) {
    if (wanted.empty()) {
        return std::string(text);
    }
    std::string out;
    std::size_t offset = 0;
    for (auto next = text.find(wanted); next != std::string_view::npos; next = text.find(wanted, offset)) {
        out += text.substr(offset, next - offset);
        out += by;
        offset = next + wanted.size();
    }
    out += text.substr(offset);
    return out;
}

std::string lower(std::string_view text) {
    return mapped(text, lowerCode);
}

std::string upper(std::string_view text) {
    return mapped(text, upperCode);
}

} // namespace quillport::text
