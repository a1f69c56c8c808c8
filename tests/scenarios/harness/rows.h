#pragma once

#include "harness/ScenarioFile.h"

#include <stdexcept>
#include <vector>

namespace quillport::scenarios {

class RowsError : public std::runtime_error {
public:
    RowsError(int line, const std::string& text) : std::runtime_error(text), line_(line) {}
    [[nodiscard]] int line() const { return line_; }

private:
    int line_;
};

/// One scenario for each row of a table. The table's first line names the columns; `<COLUMN>` in the title
/// and in any line is replaced by the row's value. A line of nothing else drops out where the value is empty.
/// Raises RowsError for a table that does not fit the scenario.
[[nodiscard]] std::vector<Scenario> spread(const Scenario& scenario, const std::vector<SourceLine>& table,
                                           int tableLine);

} // namespace quillport::scenarios
