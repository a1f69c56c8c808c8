#include "terminal/file_types.h"

#include "terminal/UsageError.h"
#include "terminal/spelling.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace quillport {

namespace {

constexpr std::array types{
    FileType{"application", "Application", SendSource::file},
    FileType{"os", "Operating System", SendSource::file},
    FileType{"configuration", "Configuration", SendSource::folder},
    FileType{"gui", "GUI", SendSource::file},
    FileType{"templates", "Templates", SendSource::folder},
};

std::vector<std::string_view> words() {
    std::vector<std::string_view> all;
    all.reserve(types.size());
    for (const FileType& type : types) {
        all.push_back(type.word);
    }
    return all;
}

} // namespace

std::span<const FileType> fileTypes() {
    return types;
}

const FileType& fileTypeNamed(std::string_view word) {
    const auto found =
        std::find_if(types.begin(), types.end(), [&](const FileType& type) { return type.word == word; });
    if (found == types.end()) {
        throw UsageError("unknown TYPE \"" + std::string(word) + "\"" + spelling::hint(word, words()) +
                         "; the types are " + spelling::listed(words()));
    }
    return *found;
}

} // namespace quillport
