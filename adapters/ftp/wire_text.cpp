#include "ftp/wire_text.h"

#include <algorithm>
#include <cstdint>

namespace quillport::ftp {

namespace {

unsigned char byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// Length of the valid UTF-8 sequence at the start of the bytes; 0 when there is none. Overlong forms,
/// surrogates and what lies above U+10FFFF are not valid.
std::size_t sequenceLength(std::string_view bytes) {
    const unsigned char lead = byteAt(bytes, 0);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || bytes.size() < length) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if (!isContinuation(byteAt(bytes, index))) {
            return 0;
        }
    }
    const unsigned char second = byteAt(bytes, 1);
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool surrogate = lead == 0xED && second >= 0xA0;
    const bool beyond = lead == 0xF4 && second >= 0x90;
    return overlong || surrogate || beyond ? 0 : length;
}

/// Messages longer than this help no one.
constexpr std::size_t longestWords = 500;

} // namespace

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = sequenceLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

std::string decoded(std::string_view bytes) {
    if (isUtf8(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0U | (byte >> 6U));
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

std::string presentable(std::string_view words) {
    std::string text = decoded(words.substr(0, longestWords));
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7F; },
        '?');
    return text;
}

std::string withoutSecret(std::string_view text, std::string_view secret) {
    if (secret.empty()) {
        return std::string(text);
    }
    std::string masked;
    for (auto found = text.find(secret); found != std::string_view::npos; found = text.find(secret)) {
        masked.append(text.substr(0, found)).append("[password hidden]");
        text.remove_prefix(found + secret.size());
    }
    return masked.append(text);
}

} // namespace quillport::ftp
