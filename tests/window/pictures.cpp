#include "window/WindowTest.h"

#include <QMessageBox>

namespace quillport::test {

namespace {

/// Makes the pictures of the documentation: real windows on the simulated RTU. Not a test.
class Pictures : public WindowTest {
protected:
    static void save(QWidget& widget, const std::string& name) {
        const QString file = QStringLiteral(QUILLPORT_PICTURES "/%1.png").arg(QString::fromStdString(name));
        ASSERT_TRUE(widget.grab().save(file)) << file.toStdString();
    }
};

TEST_F(Pictures, TheWholeStory) {
    open({"--application-size", "4000000", "--bytes-per-second", "2000000"});
    page->setScale(1.5);
    logIn();
    save(*page, "window");
    choose("Application");
    hand.answerPicker(local("Application").string());
    hand.plan(
        "two thirds of the file",
        [this] { return page->control()->panel()[ControlId::barTotFile].value >= 66; },
        [this] { save(*page, "window_get"); });
    click(ControlId::cmdGetFile);
    hand.answerPicker(local("Application/x").string());
    hand.whenPrompt("Folder not empty", [] { save(*frontDialog("prompt"), "prompt"); });
    hand.answerPrompt("Folder not empty", "Cancel");
    click(ControlId::cmdGetFile);
}

} // namespace

} // namespace quillport::test
