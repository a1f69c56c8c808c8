#pragma once

#include <libxml/globals.h>
#include <libxml/xmlstring.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Between the XML library's strings and ours.
namespace quillport {

/// As the library spells a text; valid as long as the string is.
[[nodiscard]] inline const xmlChar* xmlText(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// A text that the library keeps; empty for null.
[[nodiscard]] inline std::string_view viewOf(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

/// A text that the library has handed over, and that is freed here; nothing for null.
[[nodiscard]] inline std::optional<std::string> taken(xmlChar* text) {
    if (text == nullptr) {
        return std::nullopt;
    }
    const std::unique_ptr<xmlChar, void (*)(void*)> owned(text, [](void* memory) { xmlFree(memory); });
    return std::string(viewOf(text));
}

} // namespace quillport
