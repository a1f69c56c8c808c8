#include "harness/ScenarioFile.h"

#include "harness/rows.h"
#include "harness/words.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace quillport::scenarios {

namespace {

constexpr std::string_view bar = "----";

enum class Part { outside, common, actions, transcript, endState, rows };

std::string identifierOf(std::string_view title) {
    std::string name;
    bool wordStarts = true;
    for (const char character : title) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) == 0) {
            wordStarts = true;
            continue;
        }
        name += wordStarts ? static_cast<char>(std::toupper(byte)) : character;
        wordStarts = false;
    }
    return name;
}

/// What follows a keyword that opens a line at its first column.
std::optional<std::string> behindKeyword(std::string_view line, std::string_view keyword) {
    if (!line.starts_with(keyword)) {
        return std::nullopt;
    }
    const std::string_view rest = line.substr(keyword.size());
    if (!rest.empty() && rest.front() != ' ' && rest.front() != '\t') {
        return std::nullopt;
    }
    return trimmed(rest);
}

class Parser {
public:
    explicit Parser(const std::filesystem::path& path) {
        file_.path = path;
        file_.suite = path.stem().string();
    }

    ScenarioFile parse(std::string_view content) {
        std::istringstream stream{std::string(content)};
        std::string text;
        while (std::getline(stream, text)) {
            ++number_;
            takeLine(text.substr(0, text.find_last_not_of(" \t\r") + 1));
        }
        finishScenario();
        refuseDuplicates();
        if (!file_.errors.empty()) {
            file_.scenarios.clear();
        }
        return std::move(file_);
    }

private:
    void fail(int line, const std::string& text) { file_.errors.push_back({line, text}); }

    void takeLine(const std::string& line) {
        if (line.empty()) {
            whyGoesOn_ = false;
        } else if (trimmed(line).starts_with('#')) {
            takeComment(trimmed(line));
        } else if (!takeKeyword(line)) {
            takeContent(line);
        }
    }

    void takeComment(const std::string& line) {
        constexpr std::string_view opening = "# Why:";
        if (line.starts_with(opening)) {
            why_ = trimmed(line.substr(opening.size()));
            whyGoesOn_ = true;
        } else if (whyGoesOn_) {
            why_ += " " + trimmed(line.substr(1));
        }
    }

    bool takeKeyword(const std::string& line) {
        if (const auto title = behindKeyword(line, "scenario")) {
            startScenario(*title);
        } else if (line == "common") {
            startCommon();
        } else if (line == bar) {
            takeBar();
        } else if (line == "then") {
            startStep();
        } else if (line == "rows") {
            startRows();
        } else {
            return false;
        }
        return true;
    }

    void startScenario(const std::string& title) {
        const std::string why = std::exchange(why_, {});
        whyGoesOn_ = false;
        finishScenario();
        scenario_ = Scenario{
            .file = file_.path, .line = number_, .title = title, .why = why, .name = {}, .steps = {}};
        if (title.empty()) {
            fail(number_, "a scenario needs a title");
        }
        if (why.empty()) {
            fail(number_, "a scenario needs a line \"# Why: ...\" above it");
        }
        scenario_->steps.emplace_back();
        part_ = Part::actions;
    }

    void startCommon() {
        if (scenario_ || part_ == Part::common) {
            fail(number_, "\"common\" stands once, before the first scenario");
        }
        part_ = Part::common;
    }

    void takeBar() {
        if (part_ == Part::actions) {
            scenario_->steps.back().firstBar = number_;
            part_ = Part::transcript;
        } else if (part_ == Part::transcript) {
            scenario_->steps.back().lastBar = number_;
            part_ = Part::endState;
        } else {
            fail(number_, "a ---- too many: a scenario has one above its transcript and one below");
        }
    }

    void startStep() {
        if (part_ != Part::endState) {
            fail(number_, "\"then\" stands behind an end state");
            return;
        }
        scenario_->steps.emplace_back();
        part_ = Part::actions;
    }

    void startRows() {
        if (part_ != Part::endState) {
            fail(number_, "\"rows\" stands behind the end state");
            return;
        }
        rowsLine_ = number_;
        part_ = Part::rows;
    }

    void takeContent(const std::string& line) {
        why_.clear();
        const SourceLine source{.number = number_, .text = line};
        switch (part_) {
        case Part::outside:
            fail(number_, "nothing stands outside of a scenario but comments and \"common\"");
            break;
        case Part::common:
            common_.push_back(source);
            break;
        case Part::actions:
            scenario_->steps.back().actions.push_back(source);
            break;
        case Part::transcript:
            scenario_->steps.back().transcript.push_back(source);
            break;
        case Part::endState:
            scenario_->steps.back().endState.push_back(source);
            break;
        case Part::rows:
            rows_.push_back(source);
            break;
        }
    }

    void finishScenario() {
        if (!scenario_) {
            return;
        }
        Scenario scenario = std::move(*scenario_);
        scenario_.reset();
        if (part_ == Part::actions || part_ == Part::transcript) {
            fail(scenario.line, part_ == Part::actions
                                    ? "a ---- is missing: none stands above the transcript"
                                    : "a ---- is missing: none stands below the transcript");
            return;
        }
        auto& first = scenario.steps.front().actions;
        first.insert(first.begin(), common_.begin(), common_.end());
        if (part_ == Part::rows) {
            addRows(scenario);
        } else {
            add(std::move(scenario));
        }
        rows_.clear();
    }

    void addRows(const Scenario& scenario) {
        try {
            for (Scenario& row : spread(scenario, rows_, rowsLine_)) {
                add(std::move(row));
            }
        } catch (const RowsError& error) {
            fail(error.line(), error.what());
        }
    }

    void add(Scenario scenario) {
        scenario.name = identifierOf(scenario.title);
        file_.scenarios.push_back(std::move(scenario));
    }

    void refuseDuplicates() {
        std::map<std::string, int> lines;
        for (const Scenario& scenario : file_.scenarios) {
            const auto [found, isNew] = lines.emplace(scenario.name, scenario.line);
            if (!isNew) {
                fail(scenario.line, "the name " + inQuotes(scenario.name) + " stands twice: line " +
                                        std::to_string(found->second) + " has it as well");
            }
        }
    }

    ScenarioFile file_;
    Part part_ = Part::outside;
    int number_ = 0;
    std::string why_;
    bool whyGoesOn_ = false; ///< further lines of a comment belong to it
    std::vector<SourceLine> common_;
    std::vector<SourceLine> rows_;
    int rowsLine_ = 0;
    std::optional<Scenario> scenario_;
};

} // namespace

ScenarioFile parseScenarioFile(const std::filesystem::path& path, std::string_view content) {
    return Parser(path).parse(content);
}

std::vector<ScenarioFile> readScenarioFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().extension() == ".scenario") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());

    std::vector<ScenarioFile> files;
    for (const auto& path : paths) {
        ScenarioFile file = parseScenarioFile(path, readWhole(path));
        const auto same = std::find_if(files.begin(), files.end(),
                                       [&](const ScenarioFile& other) { return other.suite == file.suite; });
        if (same != files.end()) {
            file.scenarios.clear();
            file.errors.push_back({1, "the file name stands twice: " + same->path.string()});
        }
        files.push_back(std::move(file));
    }
    return files;
}

std::string readWhole(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    if (!stream) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return content.str();
}

} // namespace quillport::scenarios
