#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillport {

/// The panel's controls, in the order of the table, which is also their tab order.
enum class ControlId : std::uint8_t {
    Frame2,
    Label5,
    cmbFileType,
    Label6,
    txtResult,
    cmdGetFile,
    cmdSendFile,
    cmdCancel,
    barTotFile,
    Frame3,
    lbl_ver,
    lblHostName,
    lbl_username,
    lblRunMode,
    txt_username,
    lbl_password,
    txt_password,
    cmd_connect,
    lbl_Backdoor,
    Frame1,
    Label11,
    Label1,
    lblRtuName,
    Label7,
    lblPn,
    Label3,
    lblCfgName,
    lblCfgDate,
    Label4,
    lblGuiName,
    lblGuiDate,
    lblGuiSize,
    Label2,
    lblApp,
    lblAppDate,
    lblAppSize,
    Label9,
    lblOs,
    lblOsDate,
    lblOsSize,
};
inline constexpr std::size_t controlCount = static_cast<std::size_t>(ControlId::lblOsSize) + 1;

enum class ControlKind : std::uint8_t { frame, label, comboBox, textBox, button, progressBar };

/// How a control looks beyond its kind.
enum class ControlStyle : std::uint8_t {
    plain,
    heading, ///< highlight text on teal, bold
    teal,    ///< a button on teal
    runMode, ///< red, Tahoma 9.75
};
enum class Alignment : std::uint8_t { left, centre };

struct Colour {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};
/// Background of the panel and of what has no colour of its own.
inline constexpr Colour panelBackground{223, 223, 200};
inline constexpr Colour headingTeal{0, 102, 102};
inline constexpr Colour runModeRed{255, 0, 0};

/// Twips: 1440 to the inch, 15 to a pixel at normal size.
struct Twips {
    std::int32_t left;
    std::int32_t top;
    std::int32_t width;
    std::int32_t height;
};
inline constexpr std::int32_t panelWidth = 6855;
inline constexpr std::int32_t panelHeight = 5640;

/// What a control is from the start and stays. Positions are relative to the control that holds it.
struct ControlDesign {
    ControlId id;
    std::string_view name;
    ControlKind kind;
    std::optional<ControlId> parent; ///< nothing for a frame that lies on the panel itself
    std::string_view text;           ///< caption, or text of a box, until something writes it
    Twips position;
    ControlStyle style = ControlStyle::plain;
    Alignment alignment = Alignment::left;
    std::string_view toolTip = {};
    std::int32_t maxLength = 0; ///< characters that the operator may type; 0 for no limit
    bool password = false;      ///< shows "*" for each character
    bool enabled = true;        ///< at the start
};

/// The one table of the panel, in the order of ControlId.
[[nodiscard]] std::span<const ControlDesign, controlCount> panelTable();
[[nodiscard]] const ControlDesign& designOf(ControlId id);
/// The control with a name, compared exactly.
[[nodiscard]] std::optional<ControlId> controlNamed(std::string_view name);

/// What a write changes: a caption (frames, labels, buttons), a text (boxes), the bar's value, a combo box's
/// items.
enum class PanelProperty : std::uint8_t { caption, text, enabled, visible, value, items };
[[nodiscard]] std::string_view propertyName(PanelProperty property);
/// Which of caption and text a kind of control has; a bar has neither.
[[nodiscard]] std::optional<PanelProperty> wordingOf(ControlKind kind);

/// A control as it stands.
struct ControlState {
    std::string text; ///< caption or text
    std::vector<std::string> items;
    std::int32_t value = 0;
    bool enabled = true;
    bool visible = true;
};

/// Told of every write to the panel, also of one that changes nothing, after it has been made. It may call
/// back into the control (a click that was waiting for the write).
class PanelListener {
public:
    PanelListener() = default;
    PanelListener(const PanelListener&) = delete;
    PanelListener& operator=(const PanelListener&) = delete;
    virtual ~PanelListener() = default;
    virtual void panelWritten(ControlId control, PanelProperty property) = 0;
};

/// The panel as plain data. Every write of the control goes through a setter, which tells the listener.
class Panel {
public:
    explicit Panel(PanelListener& listener);

    [[nodiscard]] const ControlState& operator[](ControlId id) const {
        return states_[static_cast<std::size_t>(id)];
    }
    [[nodiscard]] const std::string& text(ControlId id) const { return (*this)[id].text; }

    /// Writes the caption, or the text of a box.
    void setText(ControlId id, std::string text);
    void setEnabled(ControlId id, bool enabled);
    void setVisible(ControlId id, bool visible);
    void setValue(ControlId id, std::int32_t value);
    void addItem(ControlId id, std::string item);

    /// What the operator has typed replaces the text, cut to the box's length limit. No listener is told.
    void takeTyping(ControlId id, std::string_view text);

private:
    ControlState& state(ControlId id) { return states_[static_cast<std::size_t>(id)]; }

    PanelListener& listener_;
    std::array<ControlState, controlCount> states_;
};

} // namespace quillport
