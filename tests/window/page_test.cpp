#include "platform/failure.h"
#include "window/WindowTest.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QScrollArea>
#include <QtTest>

namespace quillport::test {

namespace {

class Page : public WindowTest {};

TEST_F(Page, ACloseOutranksAReload) {
    openAndLogIn({"--application-size", "4000000", "--bytes-per-second", "400000"});
    choose("Application");
    hand.answerPicker(local("Application").string());
    hand.plan("the file on its way", resultBegins("Receiving"), [this] {
        page->close();
        page->reload();
    });
    click(ControlId::cmdGetFile);
    hand.waitFor("the window to close", [this] { return !page->isVisible(); });
    EXPECT_EQ(page->control(), nullptr);
}

TEST_F(Page, ALoadOfAnotherBoardGivesAFreshPanel) {
    openAndLogIn();
    const QPointer<QWidget> before = page->panel();
    page->setAddress("other.test", "K5901");
    QTest::mouseClick(page->findChild<QWidget*>("pageLoad"), Qt::LeftButton);
    hand.waitFor("the new control", [&] { return before.isNull(); });
    EXPECT_EQ(shown(ControlId::lblHostName), "other.test");
    EXPECT_EQ(shown(ControlId::lblApp), "");
    EXPECT_EQ(page->windowTitle(), "other.test - Quillport");
}

TEST_F(Page, AReloadTakesWhatWasLoadedAndNotWhatIsBeingTyped) {
    openAndLogIn();
    const QPointer<QWidget> before = page->panel();
    page->setAddress("half-typ", "K5901");
    page->reload();
    hand.waitFor("the new control", [&] { return before.isNull(); });
    EXPECT_EQ(shown(ControlId::lblHostName), "rtu.test");
}

TEST_F(Page, NothingIsLoadedBeforeItIsAskedFor) {
    open();
    ControlPage empty(host, {.files = files, .xml = *xml, .makeFtpClient = [] { return nullptr; }});
    empty.show();
    QCoreApplication::processEvents();
    EXPECT_EQ(empty.control(), nullptr);
    EXPECT_EQ(empty.panel(), nullptr);
    host.setWindow(page.get());
}

TEST_F(Page, EnterInTheHostFieldLoads) {
    open();
    const QPointer<QWidget> before = page->panel();
    page->setAddress("other.test", "K5902");
    QTest::keyClick(page->findChild<QWidget*>("pageHost"), Qt::Key_Return);
    hand.waitFor("the new control", [&] { return before.isNull(); });
    EXPECT_EQ(shown(ControlId::lblHostName), "other.test");
}

TEST_F(Page, TheBoardsAreOfferedAndOthersCanBeTyped) {
    open();
    const auto* boards = page->findChild<QComboBox*>("pageBoard");
    EXPECT_EQ(boards->itemText(0), "K5901");
    EXPECT_EQ(boards->itemText(1), "K5902");
    EXPECT_TRUE(boards->isEditable());
}

TEST_F(Page, ZoomKeysScaleThePanelBetweenOneAndThree) {
    open();
    const QSize normal = page->panel()->size();
    const auto press = [this](Qt::Key key) { QTest::keyClick(page.get(), key, Qt::ControlModifier); };
    press(Qt::Key_Plus);
    EXPECT_GT(page->scale(), 1.0);
    EXPECT_GT(page->panel()->width(), normal.width());
    for (int times = 0; times < 20; ++times) {
        press(Qt::Key_Plus);
    }
    EXPECT_EQ(page->scale(), 3.0);
    EXPECT_EQ(page->panel()->size(), normal * 3);
    press(Qt::Key_Minus);
    EXPECT_LT(page->scale(), 3.0);
    press(Qt::Key_0);
    EXPECT_EQ(page->panel()->size(), normal);
    press(Qt::Key_Minus);
    EXPECT_EQ(page->scale(), 1.0);
}

TEST_F(Page, AReloadKeepsTheScale) {
    open();
    page->setScale(2.0);
    const QPointer<QWidget> before = page->panel();
    page->reload();
    hand.waitFor("the new control", [&] { return before.isNull(); });
    EXPECT_EQ(page->panel()->scale(), 2.0);
}

/// A client that breaks in a place where the control has no trap.
class BrokenFtpClient : public CurlFtpClient {
public:
    using CurlFtpClient::CurlFtpClient;
    std::int32_t get_ftpState() override { throw Failure(5, "Invalid procedure call or argument"); }
};

TEST_F(Page, AFailureThatLeavesACommandIsShownAndThePanelLivesOn) {
    open();
    page = std::make_unique<ControlPage>(
        host, ControlParts{.files = files, .xml = *xml, .makeFtpClient = [this] {
                               CurlFtpOptions options;
                               options.connectTo = rtu->connectTo("rtu.test");
                               return std::make_unique<BrokenFtpClient>(host, options);
                           }});
    page->setAddress("rtu.test", "K5902");
    page->show();
    page->load();
    hand.waitFor("the control", [this] { return page->control() != nullptr; });
    logIn();
    hand.answerPrompt("Quillport", "OK");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.prompts,
              std::vector<std::string>{"[Quillport] Invalid procedure call or argument {*OK} stop"});
    EXPECT_FALSE(page->isBusy());
}

TEST_F(Page, AControlThatCannotBeMadeIsToldAndCanBeTriedAgain) {
    open();
    bool fails = true;
    page =
        std::make_unique<ControlPage>(host, ControlParts{.files = files, .xml = *xml, .makeFtpClient = [&] {
                                                             if (std::exchange(fails, false)) {
                                                                 throw Failure(7, "Out of memory");
                                                             }
                                                             return std::make_unique<CurlFtpClient>(host);
                                                         }});
    hand.answerPrompt("Quillport", "OK");
    page->load();
    hand.waitFor("the box", [this] { return hand.isDone() && !page->isBusy(); });
    EXPECT_EQ(hand.prompts, std::vector<std::string>{"[Quillport] Out of memory {*OK} stop"});
    EXPECT_EQ(page->control(), nullptr);
    page->reload();
    hand.waitFor("the control", [this] { return page->control() != nullptr; });
}

} // namespace

} // namespace quillport::test
