#include "files/native_path.h"

#include "platform/failure.h"
#include "unit/files/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;

TEST(NativePath, TurnsSeparatorsAround) {
    EXPECT_EQ(nativePath("\\no-such\\op\\Backup\\"), "/no-such/op/Backup/");
    EXPECT_EQ(nativePath("\\no-such\\op"), "/no-such/op");
    EXPECT_EQ(nativePath("/no-such/op\\a.txt"), "/no-such/op/a.txt");
    EXPECT_EQ(nativePath("\\\\no-such\\\\op"), "/no-such/op");
    EXPECT_EQ(nativePath("\\"), "/");
}

TEST(NativePath, StartsARelativePathAtTheCurrentFolder) {
    const fs::path here = fs::current_path();
    EXPECT_EQ(nativePath(""), here);
    EXPECT_EQ(nativePath("no-such\\file"), here / "no-such/file");
}

TEST(NativePath, TakesEachComponentInTheCaseInWhichItExists) {
    const TemporaryFolder folder;
    folder.write("Backup/Config/Main.XML");
    const fs::path file = folder.path() / "Backup/Config/Main.XML";
    EXPECT_EQ(nativePath(folder.at("Backup\\Config\\Main.XML")), file);
    EXPECT_EQ(nativePath(folder.at("backup\\CONFIG\\main.xml")), file);
    EXPECT_EQ(nativePath(folder.at("backup\\config\\")), folder.path() / "Backup/Config/");
}

TEST(NativePath, KeepsTheSpellingOfWhatDoesNotExist) {
    const TemporaryFolder folder;
    folder.makeFolder("Backup");
    EXPECT_EQ(nativePath(folder.at("BACKUP\\New\\File.txt")), folder.path() / "Backup/New/File.txt");
}

TEST(NativePath, PrefersTheExactNameAndThenTheSmallest) {
    const TemporaryFolder folder;
    folder.write("b.txt");
    folder.write("B.txt");
    folder.write("b.TXT");
    EXPECT_EQ(nativePath(folder.at("b.txt")).filename(), "b.txt");
    EXPECT_EQ(nativePath(folder.at("b.TXT")).filename(), "b.TXT");
    EXPECT_EQ(nativePath(folder.at("B.TXT")).filename(), "B.txt");
}

TEST(NativePath, FoldsLettersBeyondAscii) {
    const TemporaryFolder folder;
    folder.write("\xC3\x89t\xC3\xA9.txt"); // Été.txt
    EXPECT_EQ(nativePath(folder.at("\xC3\xA9T\xC3\x89.TXT")).filename(), "\xC3\x89t\xC3\xA9.txt");
}

TEST(NativePath, DoesNotGuessBelowAMissingFolder) {
    const TemporaryFolder folder;
    folder.write("a/File.txt");
    EXPECT_EQ(nativePath(folder.at("b\\file.txt")), folder.path() / "b/file.txt");
}

TEST(NativePath, NeverMatchesANameWithABackslashInIt) {
    const TemporaryFolder folder;
    folder.write("a\\b");
    EXPECT_EQ(nativePath(folder.at("a\\b")), folder.path() / "a/b");
}

TEST(NativePath, RefusesANulCharacter) {
    try {
        (void)nativePath(std::string_view("\\tmp\0\\x", 7));
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.number(), failure_number::pathNotFound);
    }
}

TEST(ControlPath, TurnsSeparatorsBack) {
    EXPECT_EQ(controlPath("/home/op/Backup/"), "\\home\\op\\Backup\\");
    EXPECT_EQ(controlPath("/"), "\\");
    EXPECT_EQ(controlPath("a/b"), "a\\b");
}

TEST(ControlPath, RefusesANameThatWouldReadAsTwo) {
    EXPECT_THROW((void)controlPath("/home/a\\..\\..\\etc"), Failure);
    EXPECT_FALSE(isSpeakable("a\\b"));
    EXPECT_TRUE(isSpeakable("a b"));
}

TEST(IsHidden, MeansALeadingDot) {
    EXPECT_TRUE(isHidden("/home/op/.profile"));
    EXPECT_TRUE(isHidden("/home/op/.cache/"));
    EXPECT_FALSE(isHidden("/home/.op/profile"));
    EXPECT_FALSE(isHidden("/home/op/a.b"));
    EXPECT_FALSE(isHidden("/home/op/."));
    EXPECT_FALSE(isHidden("/home/op/.."));
    EXPECT_FALSE(isHidden("/"));
}

} // namespace
} // namespace quillport
