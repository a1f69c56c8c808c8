#include "window/WindowTest.h"

#include <QLineEdit>
#include <QPointer>
#include <QtTest>

namespace quillport::test {

namespace {

enum class Ending { reload, close };

/// A reload or a close of the window, asked for while a call of the control runs.
class Stop : public WindowTest, public testing::WithParamInterface<Ending> {
protected:
    /// What the operator does in the middle of it all.
    void end() {
        if (GetParam() == Ending::close) {
            page->close();
            return;
        }
        // A reload works in front of a dialog as well.
        QWidget* front = QApplication::activeModalWidget();
        QTest::keyClick(front != nullptr ? front : page.get(), Qt::Key_F5);
    }

    [[nodiscard]] Operator::Action ending() {
        return [this] { end(); };
    }

    [[nodiscard]] Operator::Action endingWithoutKeys() {
        return [this] { GetParam() == Ending::close ? static_cast<void>(page->close()) : page->reload(); };
    }

    /// Plans an action for when a file is on its way and the window has the keyboard again, which the
    /// offscreen platform does not give back by itself when a dialog has gone.
    void whenReceiving(Operator::Action action) {
        hand.plan("the file on its way", resultBegins("Receiving"), [this] { page->activateWindow(); });
        hand.plan(
            "the window in front", [this] { return QApplication::activeWindow() == page.get(); },
            std::move(action));
    }

    /// Notes the control whose call is to be ended.
    void remember() { panelBefore_ = page->panel(); }

    void expectAGoodEnd() {
        EXPECT_TRUE(hand.isDone());
        if (GetParam() == Ending::close) {
            hand.waitFor("the window to close", [this] { return !page->isVisible(); });
            EXPECT_EQ(page->control(), nullptr);
            return;
        }
        hand.waitFor("the new control",
                     [this] { return page->control() != nullptr && panelBefore_.isNull(); });
        EXPECT_FALSE(page->isBusy());
        EXPECT_EQ(shown(ControlId::txtResult), "Not connected to RTU");
        EXPECT_EQ(shown(ControlId::lblHostName), "rtu.test");
        // The new control works.
        rtu->clearFaults();
        logIn();
        EXPECT_EQ(shown(ControlId::txtResult), "Connected to RTU");
    }

private:
    QPointer<QWidget> panelBefore_;
};

TEST_P(Stop, WhileNothingRuns) {
    openAndLogIn();
    remember();
    end();
    expectAGoodEnd();
}

TEST_P(Stop, DuringALogin) {
    open({"--fault", "stall=USER"});
    remember();
    hand.plan(
        "the login", [this] { return page->isBusy() && !rtu->commands().empty(); }, ending());
    logIn();
    expectAGoodEnd();
}

TEST_P(Stop, WhileTheSetupFileIsRead) {
    open({"--fault", "http-stall=rtusetup.xml"});
    remember();
    hand.plan("the connection", resultBegins("Connected to RTU"), ending());
    logIn();
    expectAGoodEnd();
}

TEST_P(Stop, DuringAListing) {
    open({"--fault", "stall=LIST"});
    remember();
    hand.plan(
        "the listing",
        [this] {
            const auto commands = page->isBusy() ? rtu->commands() : std::vector<LoggedCommand>();
            return !commands.empty() && commands.back().command == "LIST";
        },
        ending());
    logIn();
    expectAGoodEnd();
}

TEST_P(Stop, InAPrompt) {
    open();
    remember();
    hand.whenPrompt("Quillport", ending());
    QTest::mouseDClick(page->panel()->widgetOf(ControlId::lbl_Backdoor), Qt::LeftButton);
    expectAGoodEnd();
}

TEST_P(Stop, InAFailedLoginsPrompt) {
    open({"--fault", "refuse=PASS"});
    remember();
    hand.whenPrompt("Quillport", ending());
    logIn();
    expectAGoodEnd();
}

TEST_P(Stop, InAFileDialog) {
    openAndLogIn();
    remember();
    choose("Application");
    hand.whenPicker(ending());
    click(ControlId::cmdGetFile);
    expectAGoodEnd();
    EXPECT_TRUE(filesIn("").empty());
}

TEST_P(Stop, InARunningGet) {
    openAndLogIn({"--application-size", "4000000", "--bytes-per-second", "400000"});
    remember();
    choose("Application");
    hand.answerPicker(local("Application").string());
    whenReceiving(ending());
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(filesIn("Application").empty());
    expectAGoodEnd();
}

TEST_P(Stop, InAPromptInsideARunningGet) {
    openAndLogIn({"--bytes-per-second", "4000000"});
    remember();
    choose("Operating System");
    hand.answerPicker(local("OperatingSystem/x").string());
    hand.plan("the first file on its way", resultBegins("Receiving vxworks"),
              [this] { write("OperatingSystem/WebCli", "old"); });
    hand.whenPrompt("File Exists", ending());
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(read("OperatingSystem/WebCli") == "old");
    expectAGoodEnd();
}

TEST_P(Stop, InAFileDialogOfACommandInsideARunningGet) {
    openAndLogIn({"--application-size", "4000000", "--bytes-per-second", "400000"});
    remember();
    choose("Application");
    hand.answerPicker(local("Application").string());
    hand.plan("the file on its way", resultBegins("Receiving"), [this] {
        hand.whenPicker(ending());
        click(ControlId::cmdGetFile);
    });
    click(ControlId::cmdGetFile);
    expectAGoodEnd();
}

TEST_P(Stop, WhileTheFilesAreVerified) {
    openAndLogIn();
    remember();
    hand.answerPicker(local("Configuration/x").string());
    // The control yields to events once for each file that it verifies.
    QObject::connect(&widget<QLineEdit>(ControlId::txtResult), &QLineEdit::textChanged, page.get(),
                     [this](const QString& text) {
                         if (text.startsWith("Verifying")) {
                             QMetaObject::invokeMethod(page.get(), endingWithoutKeys(), Qt::QueuedConnection);
                         }
                     });
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(std::filesystem::exists(local("Configuration/xml")));
    EXPECT_FALSE(std::filesystem::exists(local("Configuration/ISaGRAF"))) << "the command went on";
    expectAGoodEnd();
}

TEST_P(Stop, AfterACancelThatIsStillOnItsWay) {
    openAndLogIn({"--application-size", "4000000", "--bytes-per-second", "400000"});
    remember();
    choose("Application");
    hand.answerPicker(local("Application").string());
    whenReceiving([this] {
        click(ControlId::cmdCancel);
        end();
    });
    click(ControlId::cmdGetFile);
    expectAGoodEnd();
}

INSTANTIATE_TEST_SUITE_P(Window, Stop, testing::Values(Ending::reload, Ending::close),
                         [](const auto& test) { return test.param == Ending::reload ? "Reload" : "Close"; });

} // namespace

} // namespace quillport::test
