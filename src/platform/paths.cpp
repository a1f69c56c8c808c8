#include "platform/paths.h"

namespace quillport::paths {

namespace {
constexpr std::string_view separators = "/\\";
}

std::string fileName(std::string_view path) {
    const auto last = path.find_last_of(separators);
    return std::string(last == std::string_view::npos ? path : path.substr(last + 1));
}

std::string parentFolder(std::string_view path) {
    const auto last = path.find_last_of(separators);
    return std::string(last == std::string_view::npos ? std::string_view() : path.substr(0, last));
}

} // namespace quillport::paths
