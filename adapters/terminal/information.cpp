#include "terminal/information.h"

#include "platform/text.h"
#include "terminal/printable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <sstream>
#include <vector>

namespace quillport {

namespace {

using Json = nlohmann::ordered_json;

/// One row of the frame: the labels that make it.
struct Row {
    ControlId head;
    ControlId name;
    std::optional<ControlId> date = {};
    std::optional<ControlId> size = {};
};

constexpr std::array rows{
    Row{ControlId::Label1, ControlId::lblRtuName},
    Row{ControlId::Label7, ControlId::lblPn},
    Row{ControlId::Label3, ControlId::lblCfgName, ControlId::lblCfgDate},
    Row{ControlId::Label4, ControlId::lblGuiName, ControlId::lblGuiDate, ControlId::lblGuiSize},
    Row{ControlId::Label2, ControlId::lblApp, ControlId::lblAppDate, ControlId::lblAppSize},
    Row{ControlId::Label9, ControlId::lblOs, ControlId::lblOsDate, ControlId::lblOsSize},
};

constexpr std::size_t columnCount = 4;
constexpr std::size_t sizeColumn = 3;
using Cells = std::array<std::string, columnCount>;

/// The head of the table: the frame's own heads, parted by blanks there.
Cells headCells(const Panel& panel) {
    std::istringstream words(panel.text(ControlId::Label11));
    Cells cells;
    words >> cells[1] >> cells[2] >> cells[3];
    return cells;
}

std::vector<Cells> tableCells(const Panel& panel) {
    const auto shown = [&](std::optional<ControlId> label) {
        return label ? printableLine(panel.text(*label)) : "";
    };
    std::vector<Cells> table{headCells(panel)};
    for (const Row& row : rows) {
        table.push_back({shown(row.head), shown(row.name), shown(row.date), shown(row.size)});
    }
    if (!panel.text(ControlId::lblRunMode).empty()) {
        // The mode has no head of its own on the panel.
        table.insert(table.begin() + 2, {"", shown(ControlId::lblRunMode), "", ""});
    }
    return table;
}

std::size_t width(const std::string& cell) {
    return static_cast<std::size_t>(text::length(cell));
}

std::string padding(const std::string& cell, std::size_t columnWidth) {
    return std::string(columnWidth - width(cell), ' ');
}

std::string withoutTrailingBlanks(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

Json sizeJson(const std::string& caption) {
    std::int64_t bytes = 0;
    const char* const end = caption.data() + caption.size();
    const auto [stop, error] = std::from_chars(caption.data(), end, bytes);
    return error == std::errc() && stop == end ? Json(bytes) : Json(nullptr);
}

Json fileJson(const Panel& panel, ControlId name, ControlId date, std::optional<ControlId> size) {
    return {{"name", panel.text(name)},
            {"date", panel.text(date)},
            {"size", size ? sizeJson(panel.text(*size)) : Json(nullptr)}};
}

} // namespace

std::string informationTable(const Panel& panel) {
    const std::vector<Cells> table = tableCells(panel);
    std::array<std::size_t, columnCount> widths{};
    for (const Cells& cells : table) {
        for (std::size_t column = 0; column < columnCount; ++column) {
            widths[column] = std::max(widths[column], width(cells[column]));
        }
    }
    std::string text;
    for (const Cells& cells : table) {
        std::string line;
        for (std::size_t column = 0; column < columnCount; ++column) {
            const std::string blanks = padding(cells[column], widths[column]);
            line += column == sizeColumn ? blanks + cells[column] : cells[column] + blanks + "  ";
        }
        text += withoutTrailingBlanks(line) + "\n";
    }
    return text;
}

nlohmann::ordered_json informationJson(const Panel& panel) {
    return {
        {"rtuName", panel.text(ControlId::lblRtuName)},
        {"partNo", panel.text(ControlId::lblPn)},
        {"runMode", panel.text(ControlId::lblRunMode)},
        {"configuration", fileJson(panel, ControlId::lblCfgName, ControlId::lblCfgDate, std::nullopt)},
        {"gui", fileJson(panel, ControlId::lblGuiName, ControlId::lblGuiDate, ControlId::lblGuiSize)},
        {"application", fileJson(panel, ControlId::lblApp, ControlId::lblAppDate, ControlId::lblAppSize)},
        {"operatingSystem", fileJson(panel, ControlId::lblOs, ControlId::lblOsDate, ControlId::lblOsSize)},
    };
}

} // namespace quillport
