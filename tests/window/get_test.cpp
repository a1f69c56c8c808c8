#include "window/WindowTest.h"

#include <QElapsedTimer>
#include <QFileDialog>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <algorithm>

#include <sys/stat.h>

namespace quillport::test {

namespace {

const std::string application = "K5902-041A-0300.out";

class GetApplication : public WindowTest {
protected:
    void openForApplication(const std::vector<std::string>& rtuOptions = {}) {
        openAndLogIn(rtuOptions);
        choose("Application");
    }
};

TEST_F(GetApplication, TheFileDialogConfirmsAFolderAndTheFileComes) {
    openForApplication();
    hand.answerPicker(local("Application").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.pickers, std::vector<std::string>{"save [Select Folder to Store RTU App] Application"});
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_EQ(filesIn("Application"), std::vector<std::string>{application});
    EXPECT_EQ(read("Application/" + application).size(), 307200u);
    EXPECT_FALSE(widget<QProgressBar>(ControlId::barTotFile).isVisible());
}

TEST_F(GetApplication, AFileThatStandsUnderTheConfirmedNameAsksNothing) {
    write("Application.out", "never written to");
    openForApplication();
    hand.answerPicker(local("Application").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_EQ(read("Application.out"), "never written to");
}

TEST_F(GetApplication, EscapeInTheFileDialogLeavesEverythingAsItWas) {
    openForApplication();
    hand.cancelPicker();
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "");
    EXPECT_TRUE(filesIn("").empty());
}

TEST_F(GetApplication, TheNextFileDialogStartsInTheFolderOfTheLast) {
    std::filesystem::create_directory(local("backup"));
    openForApplication();
    hand.answerPicker(local("backup/x").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(local("backup")));
    std::string folderInDialog;
    hand.whenPicker([&folderInDialog] {
        const auto* dialog = qobject_cast<QFileDialog*>(frontDialog("picker"));
        folderInDialog = dialog->directory().dirName().toStdString();
    });
    hand.answerPicker(local("other/x").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(folderInDialog, "backup");
}

TEST_F(GetApplication, ANameThatIsAFolderLeadsIntoIt) {
    write("Application/notes.txt", "kept");
    openForApplication();
    hand.answerPicker("Application");
    hand.answerPicker("Application");
    hand.answerPrompt("Folder not empty", "Cancel");
    click(ControlId::cmdGetFile);
    ASSERT_EQ(hand.pickers.size(), 2u);
    EXPECT_EQ(hand.pickers[1], "save [Select Folder to Store RTU App] Application");
    EXPECT_EQ(shown(ControlId::txtResult), "");
}

TEST_F(GetApplication, FolderNotEmptyAnsweredYesDeletesTheOldApplication) {
    write("Application/old.out", "old");
    write("Application/notes.txt", "kept");
    openForApplication();
    hand.answerPicker(local("Application/x").string());
    hand.answerPrompt("Folder not empty", "Yes");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.prompts, std::vector<std::string>{
                                "[Folder not empty] The Application folder is not empty. Do you want to "
                                "delete the application file before proceeding? {Yes, No, *Cancel} "
                                "question"});
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_EQ(filesIn("Application"), (std::vector<std::string>{application, "notes.txt"}));
}

TEST_F(GetApplication, FolderNotEmptyAnsweredNoAsksForAnotherFolder) {
    write("Application/old.out", "old");
    openForApplication();
    hand.answerPicker(local("Application/x").string());
    hand.answerPrompt("Folder not empty", "No");
    hand.answerPicker(local("elsewhere/x").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_EQ(filesIn("Application"), std::vector<std::string>{"old.out"});
    EXPECT_EQ(filesIn("elsewhere/Application"), std::vector<std::string>{application});
}

TEST_F(GetApplication, FolderNotEmptyAnsweredCancelChangesNothing) {
    write("Application/old.out", "old");
    openForApplication();
    hand.answerPicker(local("Application/x").string());
    hand.answerPrompt("Folder not empty", "Cancel");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "");
    EXPECT_EQ(filesIn("Application"), std::vector<std::string>{"old.out"});
}

TEST_F(GetApplication, EscapeStandsForCancelWhereThereIsOne) {
    write("Application/old.out", "old");
    openForApplication();
    hand.answerPicker(local("Application/x").string());
    hand.whenPrompt("Folder not empty", [] { QTest::keyClick(frontDialog("prompt"), Qt::Key_Escape); });
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "");
    EXPECT_EQ(filesIn("Application"), std::vector<std::string>{"old.out"});
}

TEST_F(GetApplication, CancelInMidTransferEndsItAndCostsNothing) {
    openForApplication({"--application-size", "4000000", "--bytes-per-second", "400000"});
    hand.answerPicker(local("Application").string());
    bool barSeen = false;
    hand.plan(
        "the bar on its way", [this] { return widget<QProgressBar>(ControlId::barTotFile).value() > 0; },
        [this, &barSeen] {
            barSeen = widget<QProgressBar>(ControlId::barTotFile).isVisible();
            click(ControlId::cmdCancel);
        });
    hand.answerPrompt("Get RTU Application", "OK");
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(barSeen);
    EXPECT_EQ(hand.prompts,
              std::vector<std::string>{"[Get RTU Application] Operation Cancelled {*OK} information"});
    EXPECT_EQ(shown(ControlId::txtResult), "Cancelled");
    EXPECT_FALSE(widget<QProgressBar>(ControlId::barTotFile).isVisible());
    EXPECT_TRUE(filesIn("Application").empty());
}

TEST_F(GetApplication, TheWindowLivesWhileAFileComes) {
    openForApplication({"--application-size", "2000000", "--bytes-per-second", "1000000"});
    hand.answerPicker(local("Application").string());
    int beats = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&] { beats += resultBegins("Receiving")() ? 1 : 0; });
    heart.start(10);
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    // Two seconds have two hundred beats; a window that only lives between blocks of data has a few.
    EXPECT_GT(beats, 50);
}

TEST_F(GetApplication, AFurtherCommandInsideARunningOneEndsWell) {
    openForApplication({"--application-size", "1000000", "--bytes-per-second", "500000"});
    hand.answerPicker(local("Application").string());
    hand.plan("the file on its way", resultBegins("Receiving"), [this] {
        hand.answerPicker(local("second/x").string());
        click(ControlId::cmdGetFile);
    });
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(hand.isDone());
    EXPECT_FALSE(page->isBusy());
    EXPECT_EQ(read("Application/" + application).size(), 1000000u);
}

class GetOperatingSystem : public WindowTest {
protected:
    /// A Get whose second file appears in the local folder while the first one comes.
    void getOverStandingFile(mode_t mode) {
        openAndLogIn({"--bytes-per-second", "4000000"});
        choose("Operating System");
        hand.answerPicker(local("OperatingSystem/x").string());
        hand.plan("the first file on its way", resultBegins("Receiving vxworks"), [this, mode] {
            write("OperatingSystem/WebCli", "old");
            ASSERT_EQ(chmod(local("OperatingSystem/WebCli").c_str(), mode), 0);
        });
    }
    [[nodiscard]] bool isOld() const { return read("OperatingSystem/WebCli") == "old"; }
    [[nodiscard]] std::string existsPrompt() const {
        std::string path = local("OperatingSystem/WebCli").string();
        std::replace(path.begin(), path.end(), '/', '\\');
        return "[File Exists] The file " + path + " exists. Do you want to overwrite ? {Yes, *No} question";
    }
    const std::string readOnlyPrompt =
        "[File Exists] File is READ ONLY. Do you want to overwrite ? {Yes, *No} question";
};

TEST_F(GetOperatingSystem, BothFilesOfTheBoardCome) {
    openAndLogIn();
    choose("Operating System");
    hand.answerPicker(local("x").string());
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.pickers,
              std::vector<std::string>{"save [Select Folder to Store OS Image] OperatingSystem"});
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_EQ(filesIn("OperatingSystem"), (std::vector<std::string>{"WebCli", "vxworks"}));
}

TEST_F(GetOperatingSystem, AFileThatIsThereIsOverwrittenOnYes) {
    getOverStandingFile(0644);
    hand.answerPrompt("File Exists", "Yes");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.prompts, std::vector<std::string>{existsPrompt()});
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_FALSE(isOld());
}

TEST_F(GetOperatingSystem, AFileThatIsThereStaysOnNo) {
    getOverStandingFile(0644);
    hand.answerPrompt("File Exists", "No");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_TRUE(isOld());
}

TEST_F(GetOperatingSystem, EscapeInAQuestionOfYesAndNoIsNo) {
    getOverStandingFile(0644);
    hand.whenPrompt("File Exists", [] { QTest::keyClick(frontDialog("prompt"), Qt::Key_Escape); });
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(isOld());
}

TEST_F(GetOperatingSystem, AReadOnlyFileIsAskedForOnceMore) {
    getOverStandingFile(0444);
    hand.answerPrompt("File Exists", "Yes");
    hand.answerPrompt("File Exists", "Yes");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(hand.prompts, (std::vector<std::string>{existsPrompt(), readOnlyPrompt}));
    EXPECT_FALSE(isOld());
}

TEST_F(GetOperatingSystem, AReadOnlyFileStaysOnNo) {
    getOverStandingFile(0444);
    hand.answerPrompt("File Exists", "Yes");
    hand.answerPrompt("File Exists", "No");
    click(ControlId::cmdGetFile);
    EXPECT_TRUE(isOld());
}

class GetConfiguration : public WindowTest {};

TEST_F(GetConfiguration, ItsPauseBlocksTheWindowAndShowsTheLastState) {
    openAndLogIn();
    hand.answerPicker(local("Configuration/x").string());
    QElapsedTimer sinceBeat;
    sinceBeat.start();
    qint64 longest = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&] { longest = std::max(longest, sinceBeat.restart()); });
    heart.start(5);
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "Config OK. ISaGRAF OK.");
    EXPECT_GE(longest, 5500);
    EXPECT_EQ(filesIn("Configuration/xml").size(), 36u);
}

TEST_F(GetOperatingSystem, FreeTextInTheComboBoxTransfersNothing) {
    openAndLogIn();
    choose("Nothing of the kind");
    click(ControlId::cmdGetFile);
    EXPECT_EQ(shown(ControlId::txtResult), "OK");
    EXPECT_TRUE(filesIn("").empty());
}

} // namespace

} // namespace quillport::test
