#include "files/mask.h"

#include "platform/text.h"

#include <string>

namespace quillport {

namespace {

/// The text without its first character.
std::string_view behindFirst(std::string_view text) {
    return text.substr(text::left(text, 1).size());
}

/// Takes the longest way only after the last "*", so that no mask takes more than name times mask steps.
bool matches(std::string_view name, std::string_view mask) {
    std::string_view maskBehindStar;
    std::string_view nameAtStar;
    bool starSeen = false;
    while (!name.empty()) {
        if (!mask.empty() && mask.front() == '*') {
            starSeen = true;
            mask.remove_prefix(1);
            maskBehindStar = mask;
            nameAtStar = name;
        } else if (!mask.empty() && mask.front() == '?') {
            mask.remove_prefix(1);
            name = behindFirst(name);
        } else if (!mask.empty() && mask.front() == name.front()) {
            mask.remove_prefix(1);
            name.remove_prefix(1);
        } else if (starSeen) {
            nameAtStar = behindFirst(nameAtStar);
            name = nameAtStar;
            mask = maskBehindStar;
        } else {
            return false;
        }
    }
    return mask.find_first_not_of('*') == std::string_view::npos;
}

} // namespace

bool matchesMask(std::string_view name, std::string_view mask) {
    return mask == "*.*" || matches(text::lower(name), text::lower(mask));
}

bool isMask(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

} // namespace quillport
