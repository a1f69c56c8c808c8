#include "control/panel.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace quillport {
namespace {

class WriteLog : public PanelListener {
public:
    void panelWritten(ControlId control, PanelProperty property) override {
        lines.push_back(std::string(designOf(control).name) + " " + std::string(propertyName(property)));
    }
    std::vector<std::string> lines;
};

class PanelTest : public testing::Test {
protected:
    WriteLog log;
    Panel panel{log};
};

TEST_F(PanelTest, ComesUpAsDesigned) {
    EXPECT_EQ(panel.text(ControlId::txtResult), "OK");
    EXPECT_EQ(panel.text(ControlId::cmbFileType), "Configuration");
    EXPECT_EQ(panel.text(ControlId::lblHostName), "Not Connected");
    EXPECT_EQ(panel.text(ControlId::lblGuiSize), "(size)");
    EXPECT_FALSE(panel[ControlId::cmdGetFile].enabled);
    EXPECT_FALSE(panel[ControlId::cmdSendFile].enabled);
    EXPECT_FALSE(panel[ControlId::cmdCancel].enabled);
    EXPECT_TRUE(panel[ControlId::cmd_connect].enabled);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(PanelTest, EveryWriteIsToldAlsoOneThatChangesNothing) {
    panel.setText(ControlId::txtResult, "OK");
    panel.setText(ControlId::lblApp, "a");
    panel.setEnabled(ControlId::cmdCancel, false);
    panel.setVisible(ControlId::barTotFile, true);
    panel.setValue(ControlId::barTotFile, 0);
    panel.addItem(ControlId::cmbFileType, "GUI");
    EXPECT_EQ(log.lines,
              (std::vector<std::string>{"txtResult text", "lblApp caption", "cmdCancel enabled",
                                        "barTotFile visible", "barTotFile value", "cmbFileType items"}));
}

TEST_F(PanelTest, TypingReplacesTheTextWithinItsLimitAndTellsNobody) {
    panel.takeTyping(ControlId::txt_username, std::string(44, 'x') + "ääää");
    EXPECT_EQ(panel.text(ControlId::txt_username), std::string(44, 'x') + "ä");
    panel.takeTyping(ControlId::cmbFileType, std::string(60, 'y'));
    EXPECT_EQ(panel.text(ControlId::cmbFileType), std::string(60, 'y'));
    EXPECT_TRUE(log.lines.empty());
}

TEST(PanelTable, ControlsAreFoundByTheirExactName) {
    EXPECT_EQ(controlNamed("txt_password"), ControlId::txt_password);
    EXPECT_EQ(controlNamed("TXT_PASSWORD"), std::nullopt);
    EXPECT_EQ(controlNamed(""), std::nullopt);
}

TEST(PanelTable, NamesAreUniqueAndEveryControlLiesInAFrameOfThePanel) {
    std::set<std::string_view> names;
    for (const ControlDesign& design : panelTable()) {
        EXPECT_TRUE(names.insert(design.name).second) << design.name;
        EXPECT_EQ(!design.parent, design.kind == ControlKind::frame) << design.name;
        if (design.parent) {
            const Twips& frame = designOf(*design.parent).position;
            EXPECT_LE(design.position.left + design.position.width, frame.width) << design.name;
            EXPECT_LE(design.position.top + design.position.height, frame.height) << design.name;
        }
    }
}

std::string_view kindText(ControlKind kind) {
    switch (kind) {
    case ControlKind::frame:
        return "frame";
    case ControlKind::label:
        return "label";
    case ControlKind::comboBox:
        return "combo box";
    case ControlKind::textBox:
        return "text box";
    case ControlKind::button:
        return "button";
    case ControlKind::progressBar:
        return "progress bar";
    }
    return "";
}

std::string_view styleText(ControlStyle style) {
    switch (style) {
    case ControlStyle::plain:
        return "";
    case ControlStyle::heading:
        return " heading";
    case ControlStyle::teal:
        return " teal";
    case ControlStyle::runMode:
        return " red";
    }
    return "";
}

/// A control on one line, with what it has beyond the ordinary at the end.
std::string line(const ControlDesign& design) {
    std::ostringstream out;
    const Twips& at = design.position;
    out << design.name << ": " << kindText(design.kind) << " in "
        << (design.parent ? designOf(*design.parent).name : "panel") << " '" << design.text << "' " << at.left
        << " " << at.top << " " << at.width << " " << at.height << styleText(design.style)
        << (design.alignment == Alignment::centre ? " centred" : "");
    if (design.maxLength != 0) {
        out << " at most " << design.maxLength;
    }
    out << (design.password ? " hidden" : "") << (design.enabled ? "" : " disabled");
    if (!design.toolTip.empty()) {
        out << " tip '" << design.toolTip << "'";
    }
    return out.str();
}

// clang-format off
constexpr std::array<std::string_view, controlCount> wholePanel{
    "Frame2: frame in panel 'File Transfer' 0 0 4575 2655",
    "Label5: label in Frame2 'File Type' 600 360 2295 255 heading centred",
    "cmbFileType: combo box in Frame2 'Configuration' 600 600 2295 315",
    "Label6: label in Frame2 'Result' 600 1200 2295 255 heading centred",
    "txtResult: text box in Frame2 'OK' 600 1440 2295 285",
    "cmdGetFile: button in Frame2 'Get from RTU' 3000 360 1335 375 teal disabled tip 'Get file(s) from the RTU'",
    "cmdSendFile: button in Frame2 'Send to RTU' 3000 840 1335 375 teal disabled tip 'Send file(s) to the RTU'",
    "cmdCancel: button in Frame2 'Cancel' 3000 1350 1335 375 disabled tip 'Cancel the GET operation'",
    "barTotFile: progress bar in Frame2 '' 360 2280 3975 255",
    "Frame3: frame in panel 'Connection' 4560 0 2295 2655",
    "lbl_ver: label in Frame3 '(ver)' 1320 120 800 220",
    "lblHostName: label in Frame3 'Not Connected' 240 360 1815 255",
    "lbl_username: label in Frame3 'User Name' 240 720 1815 255",
    "lblRunMode: label in Frame3 '' 120 840 1335 255 red",
    "txt_username: text box in Frame3 '' 240 1080 1815 285 at most 45",
    "lbl_password: label in Frame3 'Password' 240 1440 1815 255",
    "txt_password: text box in Frame3 '' 240 1800 1815 285 at most 45 hidden",
    "cmd_connect: button in Frame3 'Connect' 240 2160 1815 255",
    "lbl_Backdoor: label in Frame3 '' 1800 2280 375 255",
    "Frame1: frame in panel 'RTU Information' 0 2640 6855 3015",
    "Label11: label in Frame1 'Name                                      Date                   Size' 1680 240 4935 255 heading",
    "Label1: label in Frame1 'RTU' 360 720 735 255",
    "lblRtuName: label in Frame1 '(RTU Name)' 1680 720 2655 255",
    "Label7: label in Frame1 'Part No.' 360 1080 855 255",
    "lblPn: label in Frame1 '(Part No)' 1680 1080 2655 255",
    "Label3: label in Frame1 'Configuration' 360 1440 1095 255",
    "lblCfgName: label in Frame1 '(Config)' 1680 1440 2655 255",
    "lblCfgDate: label in Frame1 '(date)' 4440 1440 975 255",
    "Label4: label in Frame1 'GUI' 360 1800 615 255",
    "lblGuiName: label in Frame1 '(Gui)' 1680 1800 2655 255",
    "lblGuiDate: label in Frame1 '(date)' 4440 1800 975 255",
    "lblGuiSize: label in Frame1 '(size)' 5760 1800 975 255",
    "Label2: label in Frame1 'App File' 360 2160 735 255",
    "lblApp: label in Frame1 '(App File Name)' 1680 2160 2655 255",
    "lblAppDate: label in Frame1 '(date)' 4440 2160 1095 255",
    "lblAppSize: label in Frame1 '(size)' 5760 2160 975 255",
    "Label9: label in Frame1 'O/S' 360 2520 615 255",
    "lblOs: label in Frame1 '(vxworks)' 1680 2520 1215 255",
    "lblOsDate: label in Frame1 '(date)' 4440 2520 1095 255",
    "lblOsSize: label in Frame1 '(size)' 5760 2520 975 255",
};
// clang-format on

TEST(PanelTable, IsThePanelThatOperatorsKnow) {
    std::vector<std::string> lines;
    for (const ControlDesign& design : panelTable()) {
        lines.push_back(line(design));
    }
    EXPECT_EQ(lines, std::vector<std::string>(wholePanel.begin(), wholePanel.end()));
}

TEST(PanelTable, HasItsSizeAndColours) {
    EXPECT_EQ(panelWidth, 6855);
    EXPECT_EQ(panelHeight, 5640);
    const auto channels = [](const Colour& colour) {
        return std::array{colour.red, colour.green, colour.blue};
    };
    EXPECT_EQ(channels(panelBackground), (std::array<std::uint8_t, 3>{223, 223, 200}));
    EXPECT_EQ(channels(headingTeal), (std::array<std::uint8_t, 3>{0, 102, 102}));
    EXPECT_EQ(channels(runModeRed), (std::array<std::uint8_t, 3>{255, 0, 0}));
}

} // namespace
} // namespace quillport
