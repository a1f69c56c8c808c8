#include "harness/rows.h"

#include "harness/words.h"

#include <algorithm>
#include <map>

namespace quillport::scenarios {

namespace {

/// A line break as lines write it: filled in, it stands in quotes.
std::string withEscapedBreaks(std::string text) {
    constexpr std::string_view lineBreak = "\r\n";
    constexpr std::string_view escape = "\\r\\n";
    for (std::size_t at = 0; (at = text.find(lineBreak, at)) != std::string::npos; at += escape.size()) {
        text.replace(at, lineBreak.size(), escape);
    }
    return text;
}

class Row {
public:
    Row(const std::vector<std::string>& columns, const std::deque<Word>& values) {
        for (std::size_t at = 0; at < columns.size(); ++at) {
            values_["<" + columns[at] + ">"] = withEscapedBreaks(values[at].text);
        }
    }

    [[nodiscard]] std::string filledIn(std::string text) const {
        for (const auto& [placeholder, value] : values_) {
            std::size_t at = 0;
            while ((at = text.find(placeholder, at)) != std::string::npos) {
                text.replace(at, placeholder.size(), value);
                at += value.size();
            }
        }
        return text;
    }

    void fillIn(std::vector<SourceLine>& lines) const {
        for (SourceLine& line : lines) {
            line.text = filledIn(line.text);
        }
        std::erase_if(lines, [](const SourceLine& line) { return trimmed(line.text).empty(); });
    }

private:
    std::map<std::string, std::string> values_;
};

bool occurs(const std::string& placeholder, const Scenario& scenario) {
    const auto inLines = [&](const std::vector<SourceLine>& lines) {
        return std::any_of(lines.begin(), lines.end(), [&](const SourceLine& line) {
            return line.text.find(placeholder) != std::string::npos;
        });
    };
    return scenario.title.find(placeholder) != std::string::npos ||
           std::any_of(scenario.steps.begin(), scenario.steps.end(), [&](const Step& step) {
               return inLines(step.actions) || inLines(step.transcript) || inLines(step.endState);
           });
}

std::vector<std::string> columnsOf(const Scenario& scenario, const SourceLine& head) {
    std::vector<std::string> columns;
    for (const Word& word : splitWords(head.text)) {
        if (!occurs("<" + word.text + ">", scenario)) {
            throw RowsError(head.number, "the scenario has no <" + word.text + ">");
        }
        columns.push_back(word.text);
    }
    return columns;
}

Scenario scenarioOf(const Scenario& scenario, const Row& row, const std::string& firstValue, int line) {
    Scenario result = scenario;
    result.line = line;
    result.fromRow = true;
    result.title = row.filledIn(scenario.title);
    if (result.title == scenario.title) {
        result.title += ", " + firstValue;
    }
    for (Step& step : result.steps) {
        row.fillIn(step.actions);
        row.fillIn(step.transcript);
        row.fillIn(step.endState);
    }
    return result;
}

} // namespace

std::vector<Scenario> spread(const Scenario& scenario, const std::vector<SourceLine>& table, int tableLine) {
    if (table.size() < 2) {
        throw RowsError(tableLine, "rows need a line of column names and at least one line of values");
    }
    const std::vector<std::string> columns = columnsOf(scenario, table.front());
    std::vector<Scenario> scenarios;
    for (std::size_t at = 1; at < table.size(); ++at) {
        std::deque<Word> values;
        try {
            values = splitWords(table[at].text);
        } catch (const LineError& error) {
            throw RowsError(table[at].number, error.what());
        }
        if (values.size() != columns.size()) {
            throw RowsError(table[at].number, "the row has " + std::to_string(values.size()) +
                                                  " values for " + std::to_string(columns.size()) +
                                                  " columns");
        }
        scenarios.push_back(
            scenarioOf(scenario, Row(columns, values), values.front().text, table[at].number));
    }
    return scenarios;
}

} // namespace quillport::scenarios
