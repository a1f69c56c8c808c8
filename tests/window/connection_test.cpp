#include "window/WindowTest.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

namespace quillport::test {

namespace {

class Connection : public WindowTest {};

TEST_F(Connection, ThePanelComesUpReadyForALogin) {
    open();
    EXPECT_EQ(shown(ControlId::txtResult), "Not connected to RTU");
    EXPECT_EQ(shown(ControlId::lblHostName), "rtu.test");
    EXPECT_EQ(shown(ControlId::lbl_ver), "Ver : 4.1.0");
    EXPECT_EQ(shown(ControlId::cmbFileType), "Configuration");
    EXPECT_EQ(shown(ControlId::lblGuiSize), "(size)");
    for (const ControlId id :
         {ControlId::lblApp, ControlId::lblAppDate, ControlId::lblOs, ControlId::lblRtuName, ControlId::lblPn,
          ControlId::lblGuiName, ControlId::lblCfgName}) {
        EXPECT_EQ(shown(id), "") << designOf(id).name;
    }
    for (const ControlId id : {ControlId::cmdGetFile, ControlId::cmdSendFile, ControlId::cmdCancel}) {
        EXPECT_FALSE(widget<QPushButton>(id).isEnabled()) << designOf(id).name;
    }
    EXPECT_TRUE(widget<QPushButton>(ControlId::cmd_connect).isEnabled());
    EXPECT_FALSE(widget<QProgressBar>(ControlId::barTotFile).isVisible());

    const auto& types = widget<QComboBox>(ControlId::cmbFileType);
    QStringList items;
    for (int index = 0; index < types.count(); ++index) {
        items << types.itemText(index);
    }
    EXPECT_EQ(items, QStringList({"Configuration", "Application", "GUI", "Operating System", "Templates"}));
}

TEST_F(Connection, AnythingButEnterInThePasswordBoxIsTyping) {
    open();
    typeInto(ControlId::txt_username, "rtu");
    typeInto(ControlId::txt_password, "rt");
    EXPECT_EQ(rtu->commands().size(), 0u);
    EXPECT_EQ(widget<QLineEdit>(ControlId::txt_password).displayText(), "**");
}

TEST_F(Connection, EnterInThePasswordBoxLogsIn) {
    open();
    typeInto(ControlId::txt_username, "rtu");
    typeInto(ControlId::txt_password, "rtu");
    QTest::keyClick(&widget<QLineEdit>(ControlId::txt_password), Qt::Key_Return);
    EXPECT_EQ(shown(ControlId::txtResult), "Connected to RTU");
}

TEST_F(Connection, ALoginFillsThePanel) {
    openAndLogIn();
    EXPECT_EQ(shown(ControlId::lblRtuName), "Harbour Road Substation 12");
    EXPECT_EQ(shown(ControlId::lblPn), "K5902");
    EXPECT_EQ(shown(ControlId::lblCfgName), "Harbour Road 132kV Rev C");
    EXPECT_EQ(shown(ControlId::lblGuiName), "K5902-041A-0300.gui");
    EXPECT_EQ(shown(ControlId::lblApp), "K5902-041A-0300.out");
    EXPECT_EQ(shown(ControlId::lblAppSize), "307200");
    EXPECT_EQ(shown(ControlId::lblOs), "vxworks");
    EXPECT_EQ(shown(ControlId::lblRunMode), "");
    for (const ControlId id : {ControlId::cmdGetFile, ControlId::cmdSendFile, ControlId::cmdCancel}) {
        EXPECT_TRUE(widget<QPushButton>(id).isEnabled()) << designOf(id).name;
    }
    for (const ControlId id : {ControlId::cmd_connect, ControlId::txt_username, ControlId::txt_password}) {
        EXPECT_FALSE(page->panel()->widgetOf(id)->isEnabled()) << designOf(id).name;
    }
}

TEST_F(Connection, ARunModeOfSafeStandsOutInRed) {
    openAndLogIn({"--run-mode", "SAFE"});
    EXPECT_EQ(shown(ControlId::lblRunMode), "Safe Mode");
    EXPECT_EQ(widget<QLabel>(ControlId::lblRunMode).palette().color(QPalette::WindowText), QColor(255, 0, 0));
}

TEST_F(Connection, AFailedLoginIsToldAndCanBeRepeated) {
    open();
    typeInto(ControlId::txt_username, "rtu");
    typeInto(ControlId::txt_password, "wrong");
    hand.answerPrompt("Quillport", "OK");
    click(ControlId::cmd_connect);
    ASSERT_EQ(hand.prompts.size(), 1u);
    EXPECT_TRUE(hand.prompts[0].starts_with("[Quillport] Error connecting to target. Descr: '"))
        << hand.prompts[0];
    EXPECT_TRUE(hand.prompts[0].ends_with(" {*OK} none")) << hand.prompts[0];
    EXPECT_EQ(hand.prompts[0].find("wrong"), std::string::npos) << hand.prompts[0];
    EXPECT_EQ(shown(ControlId::txtResult), "Not connected to RTU");
    EXPECT_TRUE(widget<QPushButton>(ControlId::cmd_connect).isEnabled());

    typeInto(ControlId::txt_password, "rtu");
    click(ControlId::cmd_connect);
    EXPECT_EQ(shown(ControlId::txtResult), "Connected to RTU");
}

TEST_F(Connection, ABlankHostIsRefusedByTheControl) {
    open();
    page->setAddress("", "K5902");
    page->load();
    hand.waitFor("the new control", [this] { return shown(ControlId::lblHostName).empty(); });
    hand.answerPrompt("Quillport", "OK");
    logIn();
    ASSERT_EQ(hand.prompts.size(), 1u);
    EXPECT_EQ(hand.prompts[0], "[Quillport] Unable to connect due to a blank host name {*OK} none");
}

TEST_F(Connection, ALostLinkIsToldAtTheNextCommand) {
    openAndLogIn();
    rtu.reset();
    hand.answerPrompt("Quillport", "OK");
    click(ControlId::cmdGetFile);
    ASSERT_EQ(hand.prompts.size(), 1u);
    EXPECT_EQ(hand.prompts[0], "[Quillport] Not connected to RTU. Please refresh page. {*OK} none");
    EXPECT_EQ(shown(ControlId::txtResult), "Not connected to RTU");
}

TEST_F(Connection, TheBackdoorAnswersADoubleClickInEveryState) {
    open();
    hand.answerPrompt("Quillport", "OK");
    QTest::mouseDClick(page->panel()->widgetOf(ControlId::lbl_Backdoor), Qt::LeftButton);
    logIn();
    hand.answerPrompt("Quillport", "OK");
    QTest::mouseDClick(page->panel()->widgetOf(ControlId::lbl_Backdoor), Qt::LeftButton);
    EXPECT_EQ(hand.prompts, std::vector<std::string>(2, "[Quillport] Super user mode enabled {*OK} none"));
}

TEST_F(Connection, EscapeClosesAPromptWithOneButton) {
    open();
    hand.whenPrompt("Quillport", [] { QTest::keyClick(frontDialog("prompt"), Qt::Key_Escape); });
    QTest::mouseDClick(page->panel()->widgetOf(ControlId::lbl_Backdoor), Qt::LeftButton);
    EXPECT_TRUE(hand.isDone());
    EXPECT_EQ(frontDialog("prompt"), nullptr);
}

TEST_F(Connection, ALoginNeedsNoMouse) {
    open();
    auto& userName = widget<QLineEdit>(ControlId::txt_username);
    ASSERT_EQ(QApplication::focusWidget(), &userName);
    QTest::keyClicks(&userName, "rtu");
    QTest::keyClick(&userName, Qt::Key_Tab);
    QWidget* password = QApplication::focusWidget();
    ASSERT_EQ(password, page->panel()->widgetOf(ControlId::txt_password));
    QTest::keyClicks(password, "rtu");
    QTest::keyClick(password, Qt::Key_Tab);
    QWidget* connect = QApplication::focusWidget();
    ASSERT_EQ(connect, page->panel()->widgetOf(ControlId::cmd_connect));
    QTest::keyClick(connect, Qt::Key_Return);
    EXPECT_EQ(shown(ControlId::txtResult), "Connected to RTU");
    EXPECT_TRUE(page->panel()->isAncestorOf(QApplication::focusWidget()));
}

TEST_F(Connection, AMissingSetupFileIsToldAndTheLoginStands) {
    open({"--fault", "http-status:404=rtusetup.xmlx*"});
    hand.answerPrompt("Quillport", "OK");
    logIn();
    ASSERT_EQ(hand.prompts.size(), 1u);
    EXPECT_EQ(hand.prompts[0], "[Quillport]  Unable to access the file RtuSetup.xml {*OK} none");
    EXPECT_EQ(shown(ControlId::lblRtuName), "RtuSetup.xml not found");
    EXPECT_EQ(shown(ControlId::lblApp), "K5902-041A-0300.out");
}

} // namespace

} // namespace quillport::test
