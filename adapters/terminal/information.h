#pragma once

#include "control/panel.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace quillport {

/// The RTU Information frame as an aligned table, a line a row.
[[nodiscard]] std::string informationTable(const Panel& panel);

/// The same as one JSON object. A size is a number of bytes, or null where the panel shows none.
[[nodiscard]] nlohmann::ordered_json informationJson(const Panel& panel);

} // namespace quillport
