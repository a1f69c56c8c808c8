#include "harness/FileTree.h"

#include "platform/text.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

constexpr std::string_view separators = "/\\";

std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t end = path.find_first_of(separators);
        const std::string_view component = path.substr(0, end);
        if (component == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    }
    return components;
}

FileNode* childNamed(const FileNode& folder, std::string_view name) {
    const auto& children = folder.children;
    auto found = std::find_if(children.begin(), children.end(),
                              [&](const auto& child) { return child->name == name; });
    if (found == children.end()) {
        found = std::find_if(children.begin(), children.end(),
                             [&](const auto& child) { return sameName(child->name, name); });
    }
    return found == children.end() ? nullptr : found->get();
}

FileNode& addChild(FileNode& folder, const std::string& name, bool isFolder) {
    folder.children.push_back(std::make_unique<FileNode>());
    FileNode& child = *folder.children.back();
    child.name = name;
    child.isFolder = isFolder;
    child.itemType = isFolder ? 1 : 0;
    child.date = defaultDate();
    return child;
}

/// Bytes of the UTF-8 character at the front of a text.
std::size_t characterLength(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return length;
}

bool matchesFolded(std::string_view name, std::string_view mask) {
    if (mask.empty()) {
        return name.empty();
    }
    if (mask.front() == '*') {
        return matchesFolded(name, mask.substr(1)) ||
               (!name.empty() && matchesFolded(name.substr(characterLength(name)), mask));
    }
    if (name.empty()) {
        return false;
    }
    if (mask.front() == '?') {
        return matchesFolded(name.substr(characterLength(name)), mask.substr(1));
    }
    return name.front() == mask.front() && matchesFolded(name.substr(1), mask.substr(1));
}

} // namespace

DateTime defaultDate() {
    return makeDateTime(2024, 3, 1, 10, 20, 30);
}

bool sameName(std::string_view one, std::string_view other) {
    return text::lower(one) == text::lower(other);
}

bool isMask(std::string_view name) {
    return name.find_first_of("*?") != std::string_view::npos;
}

bool matchesMask(std::string_view name, std::string_view mask) {
    return mask == "*.*" || matchesFolded(text::lower(name), text::lower(mask));
}

SplitPath splitPath(std::string_view path) {
    const std::size_t last = path.find_last_of(separators);
    if (last == std::string_view::npos) {
        return {.folder = {}, .name = std::string(path)};
    }
    return {.folder = std::string(path.substr(0, last + 1)), .name = std::string(path.substr(last + 1))};
}

std::string normalPath(std::string_view path, char separator) {
    std::string result;
    for (const std::string& component : componentsOf(path)) {
        result += separator + component;
    }
    return result.empty() ? std::string(1, separator) : result;
}

bool endsInSeparator(std::string_view path) {
    return !path.empty() && separators.find(path.back()) != std::string_view::npos;
}

bool startsWithSeparator(std::string_view path) {
    return !path.empty() && separators.find(path.front()) != std::string_view::npos;
}

FileNode* FileTree::find(std::string_view path) {
    FileNode* node = &root_;
    for (const std::string& component : componentsOf(path)) {
        node = node->isFolder ? childNamed(*node, component) : nullptr;
        if (node == nullptr) {
            return nullptr;
        }
    }
    return node->isFolder || !endsInSeparator(path) ? node : nullptr;
}

FileNode* FileTree::findFile(std::string_view path) {
    FileNode* node = find(path);
    return node != nullptr && !node->isFolder ? node : nullptr;
}

FileNode* FileTree::findFolder(std::string_view path) {
    FileNode* node = find(path);
    return node != nullptr && node->isFolder ? node : nullptr;
}

std::string FileTree::spelled(std::string_view path) {
    std::string result;
    const FileNode* node = &root_;
    for (const std::string& component : componentsOf(path)) {
        node = node == nullptr ? nullptr : childNamed(*node, component);
        result += separator_ + (node == nullptr ? component : node->name);
    }
    return result.empty() ? std::string(1, separator_) : result;
}

FileNode& FileTree::putFile(std::string_view path, std::int64_t size, DateTime date) {
    const auto [folderPath, name] = splitPath(path);
    FileNode& folder = makeFolder(folderPath);
    FileNode* file = childNamed(folder, name);
    if (file == nullptr) {
        file = &addChild(folder, name, false);
    }
    file->size = size;
    file->date = date;
    file->attributes = 0;
    return *file;
}

FileNode& FileTree::makeFolder(std::string_view path) {
    FileNode* node = &root_;
    for (const std::string& component : componentsOf(path)) {
        FileNode* child = childNamed(*node, component);
        node = child != nullptr ? child : &addChild(*node, component, true);
    }
    return *node;
}

FileNode* FileTree::parentOf(std::string_view path) {
    std::vector<std::string> components = componentsOf(path);
    std::string folder(1, separator_);
    for (std::size_t at = 0; at + 1 < components.size(); ++at) {
        folder += components[at] + separator_;
    }
    return findFolder(folder);
}

bool FileTree::remove(std::string_view path) {
    const FileNode* node = find(path);
    FileNode* parent = parentOf(path);
    if (node == nullptr || parent == nullptr || node == &root_) {
        return false;
    }
    return std::erase_if(parent->children, [&](const auto& child) { return child.get() == node; }) > 0;
}

void FileTree::rename(std::string_view from, std::string_view to) {
    FileNode* node = find(from);
    FileNode* oldFolder = parentOf(from);
    FileNode* newFolder = parentOf(to);
    if (oldFolder != newFolder) {
        const auto found = std::find_if(oldFolder->children.begin(), oldFolder->children.end(),
                                        [&](const auto& child) { return child.get() == node; });
        std::unique_ptr<FileNode> moved = std::move(*found);
        oldFolder->children.erase(found);
        newFolder->children.push_back(std::move(moved));
    }
    node->name = componentsOf(to).back();
}

std::string FileTree::join(std::string_view folder, std::string_view name) const {
    std::string result(folder);
    if (!endsInSeparator(result)) {
        result += separator_;
    }
    return result.append(name);
}

} // namespace quillport::scenarios
