#pragma once

#include "harness/Faults.h"
#include "harness/Rtu.h"
#include "harness/Transcript.h"
#include "platform/FileSystem.h"

namespace quillport::scenarios {

/// The operator's files: a tree in memory. Changes are lines of the verb "files", questions of "asked".
class ScriptedFiles : public FileSystem {
public:
    ScriptedFiles(LocalDisk& disk, Transcript& transcript, Faults& faults)
        : disk_(disk), transcript_(transcript), faults_(faults) {}

    std::vector<std::string> search(const std::string& filespec, std::int32_t attributes) override;
    std::int64_t fileLength(const std::string& path) override;
    std::int32_t attributes(const std::string& path) override;
    void setAttributes(const std::string& path, std::int32_t attributes) override;
    void deleteMatching(const std::string& mask) override;
    bool fileExists(const std::string& path) override;
    bool folderExists(const std::string& path) override;
    std::vector<std::string> filesIn(const std::string& folder) override;
    std::vector<std::string> subFoldersOf(const std::string& folder) override;
    std::string typeName(const std::string& path) override;
    void deleteFile(const std::string& path, Force force) override;
    void deleteFolder(const std::string& path, Force force) override;
    void createFolder(const std::string& path) override;
    std::string currentFolder() override;
    void makeCurrent(const std::string& folder) override;

private:
    template <typename Work>
    auto run(std::string_view verb, const std::string& name, const std::string& arguments, Work&& work);
    [[nodiscard]] FileNode& fileAt(const std::string& path);
    [[nodiscard]] FileNode& folderAt(const std::string& path);
    [[nodiscard]] std::vector<std::string> matches(const std::string& filespec, std::int32_t attributes);
    [[nodiscard]] std::vector<std::string> pathsIn(const std::string& folder, bool folders);

    LocalDisk& disk_;
    Transcript& transcript_;
    Faults& faults_;
};

} // namespace quillport::scenarios
