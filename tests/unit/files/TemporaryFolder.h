#pragma once

#include "files/native_path.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>

namespace quillport::test {

/// A folder of its own for a test; it goes with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quillport-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + pattern);
        }
        path_ = std::filesystem::canonical(pattern);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    /// The control's path of something in the folder; `below` is spelled with "\".
    [[nodiscard]] std::string at(const std::string& below) const { return controlPath(path_) + "\\" + below; }

    /// Writes a file and the folders on its way. `below` is spelled with "/".
    std::filesystem::path write(const std::string& below, std::string_view content = "") const {
        std::filesystem::path file = path_ / below;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
        return file;
    }

    std::filesystem::path makeFolder(const std::string& below) const {
        std::filesystem::create_directories(path_ / below);
        return path_ / below;
    }

    [[nodiscard]] bool has(const std::string& below) const {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(path_ / below, ignored));
    }

private:
    std::filesystem::path path_;
};

} // namespace quillport::test
