#include "files/native_path.h"
#include "terminal/Console.h"
#include "terminal/StopSignals.h"
#include "terminal/TransferPicker.h"
#include "terminal/UsageError.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace quillport {
namespace {

namespace fs = std::filesystem;

class TransferPickerTest : public testing::Test {
protected:
    TransferPickerTest() {
        std::string pattern = (fs::temp_directory_path() / "quillport-picker-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        std::ofstream(folder / "K5902.out") << "x";
        fs::create_directory(folder / "xml");
    }
    ~TransferPickerTest() override { fs::remove_all(folder); }

    std::optional<std::string> picked(PickerAnswer answer, const char* proposed) {
        TransferPicker picker(console, std::move(answer));
        return picker.pick({PickerKind::save, "Select", proposed, ""});
    }
    [[nodiscard]] std::string inFolder(const char* name) const { return controlPath(folder / name); }

    fs::path folder;
    StopSignals signals;
    Console console{signals};
};

TEST_F(TransferPickerTest, takesTheProposedNameInTheFolder) {
    EXPECT_EQ(picked(answerForGet(folder), "Application"), inFolder("Application"));
    EXPECT_EQ(picked(answerForGet(folder / ""), "Application"), inFolder("Application"));
    EXPECT_EQ(picked(answerForGet(folder / "."), "Application"), inFolder("Application"));
    EXPECT_EQ(picked(answerForGet(folder / "new"), "Application"), inFolder("new") + "\\Application");
    EXPECT_EQ(picked(answerForGet("/"), "Application"), "\\Application");
    EXPECT_EQ(picked(answerForGet("a/b"), "x"), controlPath(fs::absolute("a/b/x")));
}

TEST_F(TransferPickerTest, leavesAPathThatClimbsAsItIs) {
    EXPECT_EQ(picked(answerForGet(folder / "xml" / ".."), "x"), inFolder("xml") + "\\..\\x");
}

TEST_F(TransferPickerTest, takesAFileAsItStands) {
    EXPECT_EQ(picked(answerForSend(folder / "K5902.out", fileTypeNamed("application")), "*.out"),
              inFolder("K5902.out"));
    EXPECT_EQ(picked(answerForSend(folder / "xml", fileTypeNamed("configuration")), "xml"),
              inFolder("xml") + "\\xml");
    EXPECT_EQ(picked(answerForSend(folder / "K5902.out", fileTypeNamed("templates")), "TEMPLATES"),
              inFolder("K5902.out"));
}

TEST_F(TransferPickerTest, isCancelledTheSecondTime) {
    TransferPicker picker(console, answerForGet(folder));
    EXPECT_NE(picker.pick({}), std::nullopt);
    testing::internal::CaptureStderr();
    EXPECT_EQ(picker.pick({PickerKind::save, "Select", "", ""}), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[Select] asked for another place, and none was given -> Cancel\n");
}

TEST_F(TransferPickerTest, refusesWhatCannotBeMeant) {
    const auto refusal = [](const auto& make) -> std::string {
        try {
            (void)make();
        } catch (const UsageError& error) {
            return error.what();
        }
        return "taken";
    };
    const std::string name = folder.string();
    EXPECT_EQ(refusal([&] { return answerForGet(folder / "K5902.out"); }),
              "--to: " + name + "/K5902.out is not a folder");
    EXPECT_EQ(refusal([&] { return answerForGet(""); }), "--to is empty");
    EXPECT_NE(refusal([&] { return answerForGet(folder / "a\\b"); }).find("a\\b"), std::string::npos);
    EXPECT_EQ(refusal([&] { return answerForSend(folder / "gone", fileTypeNamed("os")); }),
              "--from: " + name + "/gone is not there");
    EXPECT_EQ(refusal([&] { return answerForSend(folder, fileTypeNamed("os")); }),
              "--from: " + name + " is a folder; name the file to send");
    EXPECT_EQ(refusal([&] { return answerForSend("", fileTypeNamed("os")); }), "--from is empty");
}

TEST_F(TransferPickerTest, refusesAConfigurationWithoutDocuments) {
    const FileType& configuration = fileTypeNamed("configuration");
    EXPECT_THROW(requireFilesToSend(folder, configuration), UsageError);
    EXPECT_THROW(requireFilesToSend(folder / "K5902.out", configuration), UsageError);
    EXPECT_THROW(requireFilesToSend(folder / "xml", configuration), UsageError);
    EXPECT_NO_THROW(requireFilesToSend(folder, fileTypeNamed("templates")));
    std::ofstream(folder / "xml" / "Bay01.XML") << "<x/>";
    EXPECT_NO_THROW(requireFilesToSend(folder / "xml", configuration));
    EXPECT_NO_THROW(requireFilesToSend(folder / "xml" / "Bay01.XML", configuration));
}

TEST_F(TransferPickerTest, makesTheFolderUpToTheTreeOfTheType) {
    const FileType& templates = fileTypeNamed("templates");
    makeWayTo(answerForGet(folder / "new" / "backup"), templates);
    EXPECT_TRUE(fs::is_directory(folder / "new" / "backup"));
    makeWayTo(answerForGet(folder / "other" / "My Templates"), templates);
    EXPECT_TRUE(fs::is_directory(folder / "other"));
    EXPECT_FALSE(fs::exists(folder / "other" / "My Templates"));
    makeWayTo(answerForGet(folder / "K5902.out" / "below a file"), templates); // left to the Get to tell
}

} // namespace
} // namespace quillport
