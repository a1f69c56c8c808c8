#include "terminal/information.h"
#include "terminal/json_lines.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace quillport {
namespace {

class Deaf final : public PanelListener {
public:
    void panelWritten(ControlId, PanelProperty) override {}
};

class InformationTest : public testing::Test {
protected:
    InformationTest() {
        for (const auto& [label, text] : {std::pair{ControlId::lblRtuName, "Übergabe 12"},
                                          {ControlId::lblPn, "K5902"},
                                          {ControlId::lblCfgName, "Rev C"},
                                          {ControlId::lblCfgDate, "17/03/2016 14:22:05"},
                                          {ControlId::lblGuiName, "K5902-041.gui"},
                                          {ControlId::lblGuiDate, "10/02/15"},
                                          {ControlId::lblGuiSize, "24576"},
                                          {ControlId::lblApp, "K5902-041.out"},
                                          {ControlId::lblAppDate, "09/30/15"},
                                          {ControlId::lblAppSize, "0"},
                                          {ControlId::lblOs, ""},
                                          {ControlId::lblOsDate, ""},
                                          {ControlId::lblOsSize, ""}}) {
            panel.setText(label, text);
        }
    }

    Deaf deaf;
    Panel panel{deaf};
};

TEST_F(InformationTest, isAnAlignedTable) {
    EXPECT_EQ(informationTable(panel), "               Name           Date                  Size\n"
                                       "RTU            Übergabe 12\n"
                                       "Part No.       K5902\n"
                                       "Configuration  Rev C          17/03/2016 14:22:05\n"
                                       "GUI            K5902-041.gui  10/02/15             24576\n"
                                       "App File       K5902-041.out  09/30/15                 0\n"
                                       "O/S\n");
}

TEST_F(InformationTest, showsTheRunModeWhenThereIsOne) {
    panel.setText(ControlId::lblRunMode, "Safe Mode");
    EXPECT_NE(informationTable(panel).find("RTU            Übergabe 12\n               Safe Mode\nPart No."),
              std::string::npos);
}

TEST_F(InformationTest, keepsTheTerminalSafeFromTheRtu) {
    panel.setText(ControlId::lblRtuName, "a\x1b[2Jb\r\nc");
    EXPECT_NE(informationTable(panel).find("RTU            a?[2Jb c\n"), std::string::npos);
}

TEST_F(InformationTest, isOneJsonObject) {
    panel.setText(ControlId::lblGuiSize, "(size)");
    EXPECT_EQ(jsonLine(informationJson(panel)),
              R"({"rtuName":"Übergabe 12","partNo":"K5902","runMode":"",)"
              R"("configuration":{"name":"Rev C","date":"17/03/2016 14:22:05","size":null},)"
              R"("gui":{"name":"K5902-041.gui","date":"10/02/15","size":null},)"
              R"("application":{"name":"K5902-041.out","date":"09/30/15","size":0},)"
              R"("operatingSystem":{"name":"","date":"","size":null}})");
}

} // namespace
} // namespace quillport
