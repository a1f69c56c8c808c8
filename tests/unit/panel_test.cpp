#include "control/panel.h"

#include <gtest/gtest.h>

#include <set>

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

TEST(PanelTable, HoldsTheStylesAndLimits) {
    EXPECT_EQ(designOf(ControlId::Label5).style, ControlStyle::heading);
    EXPECT_EQ(designOf(ControlId::Label5).alignment, Alignment::centre);
    EXPECT_EQ(designOf(ControlId::Label11).style, ControlStyle::heading);
    EXPECT_EQ(designOf(ControlId::Label11).alignment, Alignment::left);
    EXPECT_EQ(designOf(ControlId::cmdGetFile).style, ControlStyle::teal);
    EXPECT_EQ(designOf(ControlId::cmdCancel).style, ControlStyle::plain);
    EXPECT_EQ(designOf(ControlId::lblRunMode).style, ControlStyle::runMode);
    EXPECT_EQ(designOf(ControlId::cmdCancel).toolTip, "Cancel the GET operation");
    EXPECT_EQ(designOf(ControlId::txt_username).maxLength, 45);
    EXPECT_EQ(designOf(ControlId::txt_password).maxLength, 45);
    EXPECT_TRUE(designOf(ControlId::txt_password).password);
}

} // namespace
} // namespace quillport
