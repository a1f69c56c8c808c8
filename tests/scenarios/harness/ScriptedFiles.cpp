#include "harness/ScriptedFiles.h"

#include "platform/text.h"

namespace quillport::scenarios {

namespace {

constexpr std::string_view change = "files";
constexpr std::string_view question = "asked";

[[noreturn]] void raise(std::int32_t number, const std::string& text) {
    throw Failure(number, text);
}

bool isReadOnly(const FileNode& node) {
    return (node.attributes & file_attribute::readOnly) != 0;
}

/// Empties a folder in its order, up to the first entry that may not go.
void clear(FileNode& folder, Force force) {
    while (!folder.children.empty()) {
        FileNode& child = *folder.children.front();
        if (child.isFolder) {
            clear(child, force);
        } else if (isReadOnly(child) && force == Force::no) {
            raise(failure_number::pathFileAccess, "Path/File access error");
        }
        folder.children.erase(folder.children.begin());
    }
}

std::string withForce(const std::string& path, Force force) {
    return inQuotes(path) + (force == Force::yes ? " force" : "");
}

} // namespace

template <typename Work>
auto ScriptedFiles::run(std::string_view verb, const std::string& name, const std::string& arguments,
                        Work&& work) {
    return recorded(transcript_, verb, name, arguments, [&](CallLine& line) {
        faults_.raiseIfDue(name);
        return work(line);
    });
}

FileNode& ScriptedFiles::fileAt(const std::string& path) {
    FileNode* file = disk_.files.findFile(disk_.absolute(path));
    if (file == nullptr) {
        raise(failure_number::fileNotFound, "File not found");
    }
    return *file;
}

FileNode& ScriptedFiles::folderAt(const std::string& path) {
    FileNode* folder = disk_.files.findFolder(disk_.absolute(path));
    if (folder == nullptr) {
        raise(failure_number::pathNotFound, "Path not found");
    }
    return *folder;
}

std::vector<std::string> ScriptedFiles::matches(const std::string& filespec, std::int32_t attributes) {
    const auto [folderPath, name] = splitPath(disk_.absolute(filespec));
    const FileNode* folder = disk_.files.findFolder(folderPath);
    std::vector<std::string> names;
    if (filespec.empty() || folder == nullptr) {
        return names;
    }
    for (const auto& child : folder->children) {
        const std::int32_t special =
            child->isFolder ? file_attribute::directory
                            : child->attributes & (file_attribute::hidden | file_attribute::system);
        if ((special & ~attributes) == 0 && (name.empty() || matchesMask(child->name, name))) {
            names.push_back(child->name);
        }
    }
    return names;
}

std::vector<std::string> ScriptedFiles::search(const std::string& filespec, std::int32_t attributes) {
    return run(question, "search", inQuotes(filespec) + " " + std::to_string(attributes),
               [&](CallLine& line) {
                   auto names = matches(filespec, attributes);
                   line.gives(std::to_string(names.size()));
                   return names;
               });
}

std::int64_t ScriptedFiles::fileLength(const std::string& path) {
    return run(question, "fileLength", inQuotes(path), [&](CallLine& line) {
        const std::int64_t length = fileAt(path).size;
        line.gives(std::to_string(length));
        return length;
    });
}

std::int32_t ScriptedFiles::attributes(const std::string& path) {
    return run(question, "attributes", inQuotes(path), [&](CallLine& line) {
        const bool isFolder = disk_.files.findFolder(disk_.absolute(path)) != nullptr;
        const std::int32_t bits = isFolder ? file_attribute::directory : fileAt(path).attributes;
        line.gives(std::to_string(bits));
        return bits;
    });
}

void ScriptedFiles::setAttributes(const std::string& path, std::int32_t attributes) {
    run(change, "setAttributes", inQuotes(path) + " " + std::to_string(attributes),
        [&](CallLine&) { fileAt(path).attributes = attributes; });
}

void ScriptedFiles::deleteMatching(const std::string& mask) {
    run(change, "deleteMatching", inQuotes(mask), [&](CallLine&) {
        const auto names = matches(mask, file_attribute::normal);
        if (names.empty() || endsInSeparator(mask)) { // a folder is no mask: never all that it holds
            raise(failure_number::fileNotFound, "File not found");
        }
        for (const std::string& name : names) {
            const std::string path = disk_.files.join(splitPath(disk_.absolute(mask)).folder, name);
            if (isReadOnly(fileAt(path))) {
                raise(failure_number::pathFileAccess, "Path/File access error");
            }
            disk_.files.remove(path);
        }
    });
}

bool ScriptedFiles::fileExists(const std::string& path) {
    return run(question, "fileExists", inQuotes(path), [&](CallLine& line) {
        const bool exists = disk_.files.findFile(disk_.absolute(path)) != nullptr;
        line.gives(std::string(truthText(exists)));
        return exists;
    });
}

bool ScriptedFiles::folderExists(const std::string& path) {
    return run(question, "folderExists", inQuotes(path), [&](CallLine& line) {
        const bool exists = disk_.files.findFolder(disk_.absolute(path)) != nullptr;
        line.gives(std::string(truthText(exists)));
        return exists;
    });
}

std::vector<std::string> ScriptedFiles::pathsIn(const std::string& folder, bool folders) {
    const std::string spelled = disk_.files.spelled(disk_.absolute(folder));
    std::vector<std::string> paths;
    for (const auto& child : folderAt(folder).children) {
        if (child->isFolder == folders) {
            paths.push_back(disk_.files.join(spelled, child->name));
        }
    }
    return paths;
}

std::vector<std::string> ScriptedFiles::filesIn(const std::string& folder) {
    return run(question, "filesIn", inQuotes(folder), [&](CallLine& line) {
        auto paths = pathsIn(folder, false);
        line.gives(std::to_string(paths.size()));
        return paths;
    });
}

std::vector<std::string> ScriptedFiles::subFoldersOf(const std::string& folder) {
    return run(question, "subFoldersOf", inQuotes(folder), [&](CallLine& line) {
        auto paths = pathsIn(folder, true);
        line.gives(std::to_string(paths.size()));
        return paths;
    });
}

std::string ScriptedFiles::typeName(const std::string& path) {
    return run(question, "typeName", inQuotes(path), [&](CallLine& line) {
        const std::string& name = fileAt(path).name;
        const std::size_t dot = name.find_last_of('.');
        const std::string extension = dot == std::string::npos ? "" : text::upper(name.substr(dot + 1));
        std::string type = "Text Document";
        if (extension != "TXT") {
            type = extension.empty() ? "File" : extension + " File";
        }
        line.gives(inQuotes(type));
        return type;
    });
}

void ScriptedFiles::deleteFile(const std::string& path, Force force) {
    run(change, "deleteFile", withForce(path, force), [&](CallLine&) {
        if (isReadOnly(fileAt(path)) && force == Force::no) {
            raise(failure_number::pathFileAccess, "Path/File access error");
        }
        disk_.files.remove(disk_.absolute(path));
    });
}

void ScriptedFiles::deleteFolder(const std::string& path, Force force) {
    run(change, "deleteFolder", withForce(path, force), [&](CallLine&) {
        clear(folderAt(path), force);
        disk_.files.remove(disk_.absolute(path));
    });
}

void ScriptedFiles::createFolder(const std::string& path) {
    run(change, "createFolder", inQuotes(path), [&](CallLine&) {
        std::string absolute = disk_.absolute(path);
        while (endsInSeparator(absolute)) {
            absolute.pop_back();
        }
        if (disk_.files.find(absolute) != nullptr) {
            raise(failure_number::fileAlreadyExists, "File already exists");
        }
        static_cast<void>(folderAt(splitPath(absolute).folder));
        disk_.files.makeFolder(absolute);
    });
}

std::string ScriptedFiles::currentFolder() {
    return run(question, "currentFolder", "", [&](CallLine& line) {
        line.gives(inQuotes(disk_.currentFolder));
        return disk_.currentFolder;
    });
}

void ScriptedFiles::makeCurrent(const std::string& folder) {
    run(question, "makeCurrent", inQuotes(folder), [&](CallLine&) {
        static_cast<void>(folderAt(folder));
        disk_.currentFolder = disk_.files.join(disk_.files.spelled(disk_.absolute(folder)), "");
    });
}

} // namespace quillport::scenarios
