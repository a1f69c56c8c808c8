#include "qt/PickerBox.h"
#include "qt/PromptBox.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace quillport::test {

namespace {

QMessageBox& boxOf(PromptBox& prompt) {
    return *qobject_cast<QMessageBox*>(&prompt.dialog());
}

/// The words on the buttons from left to right, the default one with a star.
std::vector<std::string> buttonsOf(PromptBox& prompt) {
    QMessageBox& box = boxOf(prompt);
    box.show();
    QList<QAbstractButton*> buttons = box.buttons();
    std::sort(buttons.begin(), buttons.end(),
              [](QAbstractButton* one, QAbstractButton* other) { return one->x() < other->x(); });
    std::vector<std::string> words;
    for (QAbstractButton* button : buttons) {
        words.push_back((button == box.defaultButton() ? "*" : "") + button->text().toStdString());
    }
    return words;
}

using Words = std::vector<std::string>;

TEST(PromptBox, ShowsTextAndTitleAsTheyStand) {
    PromptBox prompt(
        {.text = "The file <b>x</b> exists in \r\n\\home\\op.\r\n Overwrite & go?", .title = "File Exists"},
        nullptr);
    EXPECT_EQ(boxOf(prompt).text(), "The file <b>x</b> exists in \n\\home\\op.\n Overwrite & go?");
    EXPECT_EQ(boxOf(prompt).textFormat(), Qt::PlainText);
    EXPECT_EQ(boxOf(prompt).windowTitle(), "File Exists");
    PromptBox untitled({.text = "x"}, nullptr);
    EXPECT_EQ(boxOf(untitled).windowTitle(), "Quillport");
}

TEST(PromptBox, KeepsTheOrderOfItsButtons) {
    PromptBox three({.text = "?", .buttons = {Button::Yes, Button::No, Button::Cancel}, .defaultButton = 3},
                    nullptr);
    EXPECT_EQ(buttonsOf(three), (Words{"Yes", "No", "*Cancel"}));
    PromptBox two({.text = "?", .buttons = {Button::OK, Button::Cancel}, .defaultButton = 2}, nullptr);
    EXPECT_EQ(buttonsOf(two), (Words{"OK", "*Cancel"}));
    PromptBox retry({.text = "?", .buttons = {Button::Retry, Button::Cancel}}, nullptr);
    EXPECT_EQ(buttonsOf(retry), (Words{"*Retry", "Cancel"}));
}

TEST(PromptBox, ADefaultBeyondTheButtonsIsTheFirst) {
    for (const int number : {3, 4, 0, -1}) {
        PromptBox prompt({.text = "?", .buttons = {Button::Yes, Button::No}, .defaultButton = number},
                         nullptr);
        EXPECT_EQ(buttonsOf(prompt), (Words{"*Yes", "No"})) << number;
    }
}

TEST(PromptBox, HasTheIconOfItsKind) {
    const auto iconFor = [](Icon icon) {
        PromptBox prompt({.text = "?", .icon = icon}, nullptr);
        return boxOf(prompt).icon();
    };
    EXPECT_EQ(iconFor(Icon::none), QMessageBox::NoIcon);
    EXPECT_EQ(iconFor(Icon::question), QMessageBox::Question);
    EXPECT_EQ(iconFor(Icon::information), QMessageBox::Information);
    EXPECT_EQ(iconFor(Icon::exclamation), QMessageBox::Warning);
    EXPECT_EQ(iconFor(Icon::stop), QMessageBox::Critical);
}

Button answerTo(std::vector<Button> buttons, Qt::Key key, int defaultButton = 1) {
    PromptBox prompt({.text = "?", .buttons = std::move(buttons), .defaultButton = defaultButton}, nullptr);
    QTimer::singleShot(0, [&] { QTest::keyClick(&prompt.dialog(), key); });
    prompt.dialog().exec();
    return prompt.answer();
}

TEST(PromptBox, EscapeIsCancelElseNoElseTheOnlyButton) {
    EXPECT_EQ(answerTo({Button::Yes, Button::No, Button::Cancel}, Qt::Key_Escape), Button::Cancel);
    EXPECT_EQ(answerTo({Button::Retry, Button::Cancel}, Qt::Key_Escape), Button::Cancel);
    EXPECT_EQ(answerTo({Button::Yes, Button::No}, Qt::Key_Escape), Button::No);
    EXPECT_EQ(answerTo({Button::OK}, Qt::Key_Escape), Button::OK);
}

TEST(PromptBox, EnterIsTheDefaultButton) {
    EXPECT_EQ(answerTo({Button::Yes, Button::No, Button::Cancel}, Qt::Key_Return, 2), Button::No);
    EXPECT_EQ(answerTo({Button::Yes, Button::No}, Qt::Key_Return, 9), Button::Yes);
}

/// A file dialog's answer when the operator presses its button at once, or after typing a name.
class PickerBoxTest : public testing::Test {
protected:
    PickerBoxTest() : before_(QDir::currentPath()) { QDir::setCurrent(folder.path()); }
    ~PickerBoxTest() override { QDir::setCurrent(before_); }

    std::string answerTo(const PickerRequest& request, const QString& typed = {}) {
        PickerBox box(request, nullptr);
        QTimer::singleShot(0, [&] {
            auto* name = box.findChild<QLineEdit*>("fileNameEdit");
            if (!typed.isEmpty()) {
                name->setText(typed);
            }
            box.accept();
            if (box.isVisible()) {
                box.reject();
            }
        });
        if (box.exec() != QDialog::Accepted) {
            return "cancelled";
        }
        return std::filesystem::relative(box.answer(), folder.path().toStdString()).string();
    }

    QTemporaryDir folder;

private:
    QString before_;
};

TEST_F(PickerBoxTest, TheDefaultExtensionIsAddedOnce) {
    EXPECT_EQ(answerTo({PickerKind::save, "t", "Application", ".out"}), "Application.out");
    EXPECT_EQ(answerTo({PickerKind::save, "t", "Application", "out"}), "Application.out");
    EXPECT_EQ(answerTo({PickerKind::save, "t", "a.out", ".out"}), "a.out");
    EXPECT_EQ(answerTo({PickerKind::save, "t", "a.txt", ".out"}), "a.txt");
    EXPECT_EQ(answerTo({PickerKind::save, "t", "OperatingSystem", ""}), "OperatingSystem");
}

TEST_F(PickerBoxTest, ANameNeedNotBeThere) {
    EXPECT_EQ(answerTo({PickerKind::open, "t", "xml", "xml"}), "xml.xml");
    EXPECT_EQ(answerTo({PickerKind::save, "t", "x", ""}, folder.filePath("new/x")), "new/x");
}

TEST_F(PickerBoxTest, AMaskIsAFilterAndNoName) {
    PickerBox box({PickerKind::open, "Select", "*.out", ".out"}, nullptr);
    EXPECT_EQ(box.nameFilters(), QStringList({"*.out files (*.out)", "All files (*)"}));
    EXPECT_EQ(box.findChild<QLineEdit*>("fileNameEdit")->text(), "");
    EXPECT_EQ(answerTo({PickerKind::open, "t", "*.out", ".out"}), "cancelled") << "no name, no answer";
}

TEST_F(PickerBoxTest, ItShowsWhatIsAskedFor) {
    PickerBox open({PickerKind::open, "Select RTU GUI to Send", "vxworks", ""}, nullptr);
    EXPECT_EQ(open.windowTitle(), "Select RTU GUI to Send");
    EXPECT_EQ(open.acceptMode(), QFileDialog::AcceptOpen);
    EXPECT_EQ(open.directory().absolutePath(), QDir::currentPath());
    PickerBox save({PickerKind::save, "Select Folder", "GUI", ""}, nullptr);
    EXPECT_EQ(save.acceptMode(), QFileDialog::AcceptSave);
    EXPECT_TRUE(save.testOption(QFileDialog::DontConfirmOverwrite));
}

TEST_F(PickerBoxTest, ANameWithAPercentSignOrABlankStaysAsItIs) {
    EXPECT_EQ(answerTo({PickerKind::save, "t", "x", ""}, "Backup 100%41 äöü"), "Backup 100%41 äöü");
}

} // namespace

} // namespace quillport::test
