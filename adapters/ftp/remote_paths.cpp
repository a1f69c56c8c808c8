#include "ftp/remote_paths.h"

#include "ftp/ftp_failures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

namespace quillport::ftp {

namespace {

constexpr std::string_view separators = "/\\";

bool isSeparator(char c) {
    return separators.find(c) != std::string_view::npos;
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

using Components = std::vector<std::string_view>;

void appendComponents(Components& components, std::string_view path) {
    while (!path.empty()) {
        const auto end = std::min(path.find_first_of(separators), path.size());
        const std::string_view component = path.substr(0, end);
        if (component == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (!component.empty() && component != ".") {
            components.push_back(component);
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
}

/// The first component of a folder such as "mars:" or "mars:/sub", which some servers name without a "/" in
/// front; empty for all others.
std::string_view deviceOf(std::string_view folder) {
    return folder.empty() || isSeparator(folder.front()) ? std::string_view()
                                                         : folder.substr(0, folder.find_first_of(separators));
}

bool beginsWithDevice(std::string_view pattern, std::string_view device) {
    return !device.empty() && pattern.starts_with(device) &&
           (pattern.size() == device.size() || isSeparator(pattern[device.size()]));
}

std::string spelled(const Components& components, std::string_view device) {
    std::string path;
    for (const std::string_view component : components) {
        if (!path.empty() || component != device || device.empty()) {
            path += '/';
        }
        path += component;
    }
    return path.empty() ? "/" : path;
}

/// Six numbers with commas between them at the start of the text: four of an address, two of a port.
std::optional<std::array<int, 6>> sixNumbers(std::string_view text) {
    std::array<int, 6> numbers{};
    for (std::size_t index = 0; index < numbers.size(); ++index) {
        const auto result = std::from_chars(text.data(), text.data() + text.size(), numbers[index]);
        if (result.ec != std::errc() || numbers[index] < 0 || numbers[index] > 255) {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
        if (index + 1 < numbers.size()) {
            if (!text.starts_with(',')) {
                return std::nullopt;
            }
            text.remove_prefix(1);
        }
    }
    return numbers;
}

} // namespace

RemoteSpec readSpec(std::string_view pattern, std::string_view currentFolder) {
    requireSendable(pattern, "the remote name");
    const std::string_view device = deviceOf(currentFolder);
    const bool absolute =
        (!pattern.empty() && isSeparator(pattern.front())) || beginsWithDevice(pattern, device);
    Components components;
    if (!absolute) {
        appendComponents(components, currentFolder);
    }
    appendComponents(components, pattern);

    RemoteSpec result;
    const std::string_view tail =
        pattern.substr(std::min(pattern.find_last_of(separators) + 1, pattern.size()));
    result.namesFolder = tail.empty() || tail == "." || tail == ".." || components.empty();
    if (!result.namesFolder && components.size() == 1 && components.front() == device) {
        result.namesFolder = true;
    }
    if (!result.namesFolder) {
        result.last = components.back();
        components.pop_back();
    }
    result.folder = spelled(components, device);
    return result;
}

std::string absolutePath(std::string_view pattern, std::string_view currentFolder) {
    const RemoteSpec read = readSpec(pattern, currentFolder);
    return read.namesFolder ? read.folder : joined(read.folder, read.last);
}

std::string pathOfEntry(std::string_view pattern, std::string_view currentFolder) {
    if (pattern.empty()) {
        throw failure(ftp_failure::badArgument, "the remote name is empty");
    }
    return absolutePath(pattern, currentFolder);
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!path.ends_with('/')) {
        path += '/';
    }
    return path.append(name);
}

std::string folderOf(std::string_view path) {
    const auto last = path.rfind('/');
    if (last == std::string_view::npos) {
        return std::string(path);
    }
    return std::string(path.substr(0, std::max<std::size_t>(last, 1)));
}

std::string nameOf(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

bool isSendable(std::string_view text) {
    return std::none_of(text.begin(), text.end(), isControl);
}

void requireSendable(std::string_view text, std::string_view what) {
    if (!isSendable(text)) {
        throw failure(ftp_failure::badArgument, std::string("a control character stands in ").append(what));
    }
}

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           std::none_of(name.begin(), name.end(), [](char c) { return isSeparator(c) || isControl(c); });
}

std::string folderInReply(std::string_view words) {
    const auto opening = words.find('"');
    if (opening == std::string_view::npos) {
        return {};
    }
    std::string folder;
    for (std::size_t index = opening + 1; index < words.size(); ++index) {
        if (words[index] != '"') {
            folder += words[index];
        } else if (index + 1 < words.size() && words[index + 1] == '"') {
            folder += words[++index];
        } else {
            return folder;
        }
    }
    return {};
}

int portInReply(std::string_view words) {
    constexpr std::size_t behindCode = 4;
    for (std::size_t start = behindCode; start < words.size(); ++start) {
        const bool startsNumber = words[start] >= '0' && words[start] <= '9' &&
                                  !(words[start - 1] >= '0' && words[start - 1] <= '9');
        const auto numbers = startsNumber ? sixNumbers(words.substr(start)) : std::nullopt;
        if (numbers) {
            return (*numbers)[4] * 256 + (*numbers)[5];
        }
    }
    return 0;
}

} // namespace quillport::ftp
