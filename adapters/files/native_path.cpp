#include "files/native_path.h"

#include "platform/failure.h"
#include "platform/text.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <vector>

namespace quillport {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view separators = "/\\";

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const auto end = std::min(path.find_first_of(separators), path.size());
        if (end > 0) {
            components.emplace_back(path.substr(0, end));
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

/// The name in the folder that is equal to the wanted one without regard to case.
std::optional<std::string> foldedMatch(const fs::path& folder, const std::string& wanted) {
    const std::string folded = text::lower(wanted);
    std::optional<std::string> best;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if ((!best || name < *best) && text::lower(name) == folded) {
            best = std::move(name);
        }
    }
    return best;
}

fs::path startOf(std::string_view path) {
    if (!path.empty() && separators.find(path.front()) != std::string_view::npos) {
        return "/";
    }
    std::error_code error;
    fs::path current = fs::current_path(error);
    if (error) {
        throw Failure(failure_number::pathNotFound,
                      "Path not found: the current folder is not there any more");
    }
    return current;
}

fs::path joined(fs::path folder, const std::vector<std::string>& components) {
    for (const std::string& component : components) {
        folder /= component;
    }
    return folder;
}

/// The path with each component in the case in which it exists.
fs::path inExistingCase(fs::path folder, const std::vector<std::string>& components) {
    for (std::size_t index = 0; index < components.size(); ++index) {
        if (fs::path exact = folder / components[index]; isThere(exact)) {
            folder = std::move(exact);
        } else if (const auto match = foldedMatch(folder, components[index])) {
            folder /= *match;
        } else {
            const auto rest = components.begin() + static_cast<std::ptrdiff_t>(index);
            return joined(std::move(folder), {rest, components.end()});
        }
    }
    return folder;
}

} // namespace

fs::path nativePath(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) {
        throw Failure(failure_number::pathNotFound, "Path not found: a NUL character stands in the path");
    }
    const std::vector<std::string> components = componentsOf(path);
    const fs::path start = startOf(path);
    fs::path result = joined(start, components);
    // One look at the disk is enough for the common case, a path that is spelled as it stands there.
    if (!isThere(result)) {
        result = inExistingCase(start, components);
    }
    if (!components.empty() && separators.find(path.back()) != std::string_view::npos) {
        result /= "";
    }
    return result;
}

std::string controlPath(const fs::path& path) {
    std::string spelled = path.string();
    if (spelled.find('\\') != std::string::npos) {
        throw Failure(failure_number::pathNotFound,
                      "Path not found: a name with a \"\\\" in it cannot be used: " + spelled);
    }
    std::replace(spelled.begin(), spelled.end(), '/', '\\');
    return spelled;
}

bool isSpeakable(const fs::path& name) {
    return name.string().find('\\') == std::string::npos;
}

bool isHidden(const fs::path& path) {
    const std::string name =
        path.has_filename() ? path.filename().string() : path.parent_path().filename().string();
    return name.size() > 1 && name.front() == '.' && name != "..";
}

} // namespace quillport
