#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::scenarios {

/// A line as it stands in its file, less what trails it.
struct SourceLine {
    int number = 0;
    std::string text;
};

/// What is done, what it shows, and what stands in the end.
struct Step {
    std::vector<SourceLine> actions;
    std::vector<SourceLine> transcript;
    std::vector<SourceLine> endState;
    int firstBar = 0; ///< line of the bar above the transcript
    int lastBar = 0;  ///< line of the bar below it
};

struct Scenario {
    std::filesystem::path file;
    int line = 0;
    std::string title;
    std::string why;
    std::string name;     ///< the title as an identifier
    bool fromRow = false; ///< one of several made of one text and a table
    std::vector<Step> steps;
};

struct FileError {
    int line = 0;
    std::string text;
};

/// A file of scenarios, or what is wrong with it: then it has none.
struct ScenarioFile {
    std::filesystem::path path;
    std::string suite; ///< the file's stem
    std::vector<Scenario> scenarios;
    std::vector<FileError> errors;
};

[[nodiscard]] ScenarioFile parseScenarioFile(const std::filesystem::path& path, std::string_view content);
/// Every *.scenario file below a folder, sorted by path. Two files with one stem are an error of the second.
[[nodiscard]] std::vector<ScenarioFile> readScenarioFiles(const std::filesystem::path& folder);

[[nodiscard]] std::string readWhole(const std::filesystem::path& path);

} // namespace quillport::scenarios
