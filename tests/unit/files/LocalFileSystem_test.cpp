#include "files/LocalFileSystem.h"

#include "platform/failure.h"
#include "unit/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quillport {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

Names sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

/// The number of the failure that an operation raises; 0 when it raises none.
std::int32_t numberOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const Failure& failure) {
        EXPECT_FALSE(failure.description().empty());
        return failure.number();
    }
    return 0;
}

/// Lets the process open no more than a hundred files while it lives.
class FewOpenFiles {
public:
    FewOpenFiles() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit fewer = before_;
        fewer.rlim_cur = 100;
        setrlimit(RLIMIT_NOFILE, &fewer);
    }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;
    ~FewOpenFiles() { setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

/// Takes root's rights from the process while it lives; to any other user it changes nothing.
class NoRootRights {
public:
    explicit NoRootRights(const fs::path& ownFolder) {
        constexpr uid_t nobody = 65534;
        if (wasRoot_) {
            EXPECT_EQ(chown(ownFolder.c_str(), nobody, nobody), 0);
            EXPECT_EQ(seteuid(nobody), 0);
        }
    }
    NoRootRights(const NoRootRights&) = delete;
    NoRootRights& operator=(const NoRootRights&) = delete;
    ~NoRootRights() {
        if (wasRoot_) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }

private:
    const bool wasRoot_ = geteuid() == 0;
};

class LocalFileSystemTest : public testing::Test {
protected:
    void makeReadOnly(const std::string& below) const {
        fs::permissions(folder.path() / below,
                        fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }

    [[nodiscard]] Names search(const std::string& mask, std::int32_t attributes = file_attribute::normal) {
        return sorted(files.search(folder.at(mask), attributes));
    }

    /// The working folder of the process is put back after each test.
    void TearDown() override { fs::current_path(before); }

    const fs::path before = fs::current_path();
    test::TemporaryFolder folder;
    LocalFileSystem files;
};

TEST_F(LocalFileSystemTest, SearchFindsByMaskAndFoldsCase) {
    folder.write("a.xml");
    folder.write("B.XML");
    folder.write("c.txt");
    folder.write("README");
    EXPECT_EQ(search("*.xml"), (Names{"B.XML", "a.xml"}));
    EXPECT_EQ(search("?.*"), (Names{"B.XML", "a.xml", "c.txt"}));
    EXPECT_EQ(search("*.*"), (Names{"B.XML", "README", "a.xml", "c.txt"}));
    EXPECT_EQ(search(""), (Names{"B.XML", "README", "a.xml", "c.txt"}));
    EXPECT_EQ(search("*.out"), Names{});
}

TEST_F(LocalFileSystemTest, SearchForOneNameGivesItAsItStands) {
    folder.write("Main.xml");
    EXPECT_EQ(search("Main.xml"), Names{"Main.xml"});
    EXPECT_EQ(search("MAIN.XML"), Names{"Main.xml"});
    EXPECT_EQ(search("Other.xml"), Names{});
}

TEST_F(LocalFileSystemTest, SearchLeavesOutWhatIsNotAskedFor) {
    folder.write("file");
    folder.write(".dot");
    folder.makeFolder("sub");
    folder.makeFolder(".subdot");
    fs::create_symlink("nowhere", folder.path() / "dangling");
    EXPECT_EQ(search("*"), Names{"file"});
    EXPECT_EQ(search("*", file_attribute::hidden), (Names{".dot", "file"}));
    EXPECT_EQ(search("*", file_attribute::directory), (Names{"file", "sub"}));
    EXPECT_EQ(search("*", file_attribute::hidden | file_attribute::directory),
              (Names{".dot", ".subdot", "file", "sub"}));
    EXPECT_EQ(search("*", file_attribute::system), (Names{"dangling", "file"}));
    EXPECT_EQ(search(".dot"), Names{});
    EXPECT_EQ(search("sub"), Names{});
    EXPECT_EQ(search("sub", file_attribute::directory), Names{"sub"});
}

TEST_F(LocalFileSystemTest, SearchCountsReadOnlyFilesAndLinksToFiles) {
    folder.write("locked");
    makeReadOnly("locked");
    folder.write("target");
    fs::create_symlink("target", folder.path() / "link");
    EXPECT_EQ(search("*"), (Names{"link", "locked", "target"}));
}

TEST_F(LocalFileSystemTest, SearchOfAPipeDoesNotCountItAsAFile) {
    ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(search("*"), Names{});
    EXPECT_EQ(search("pipe"), Names{});
}

TEST_F(LocalFileSystemTest, SearchWhereThereIsNoFolderFindsNothing) {
    folder.write("file");
    EXPECT_EQ(search("none\\*.*"), Names{});
    EXPECT_EQ(search("none\\a.txt"), Names{});
    EXPECT_EQ(search("file\\*.*"), Names{});
}

TEST_F(LocalFileSystemTest, SearchStartsAtTheCurrentFolder) {
    folder.write("here.txt");
    fs::current_path(folder.path());
    EXPECT_EQ(files.search("*.TXT", file_attribute::normal), Names{"here.txt"});
    EXPECT_EQ(files.search("HERE.txt", file_attribute::normal), Names{"here.txt"});
}

TEST_F(LocalFileSystemTest, ListingsPassOverNamesWithABackslash) {
    folder.write("a\\b.txt");
    folder.write("plain.txt");
    folder.makeFolder("c\\d");
    EXPECT_EQ(search("*.txt"), Names{"plain.txt"});
    EXPECT_EQ(files.filesIn(folder.at("")), Names{folder.at("plain.txt")});
    EXPECT_EQ(files.subFoldersOf(folder.at("")), Names{});
}

TEST_F(LocalFileSystemTest, LongNamesAndUtf8NamesAreFound) {
    const std::string longName = std::string(251, 'n') + ".xml";
    const std::string utf8Name = "Z\xC3\xBCrich \xE4\xB8\xAD.xml";
    folder.write(longName);
    folder.write(utf8Name);
    EXPECT_EQ(search("*.XML"), (Names{utf8Name, longName}));
    EXPECT_TRUE(files.fileExists(folder.at("z\xC3\x9CRICH \xE4\xB8\xAD.XML")));
}

TEST_F(LocalFileSystemTest, FileLengthIsInBytes) {
    folder.write("five", "12345");
    folder.write("none");
    EXPECT_EQ(files.fileLength(folder.at("FIVE")), 5);
    EXPECT_EQ(files.fileLength(folder.at("none")), 0);
}

TEST_F(LocalFileSystemTest, FileLengthGoesBeyond32Bits) {
    const fs::path file = folder.write("big");
    ASSERT_EQ(truncate(file.c_str(), 5'000'000'000), 0);
    EXPECT_EQ(files.fileLength(folder.at("big")), 5'000'000'000);
}

TEST_F(LocalFileSystemTest, AttributesTellWhatAFileIs) {
    folder.write("file");
    folder.write(".dot");
    folder.write("locked");
    makeReadOnly("locked");
    folder.makeFolder("sub");
    EXPECT_EQ(files.attributes(folder.at("file")), file_attribute::normal);
    EXPECT_EQ(files.attributes(folder.at(".dot")), file_attribute::hidden);
    EXPECT_EQ(files.attributes(folder.at("locked")), file_attribute::readOnly);
    EXPECT_EQ(files.attributes(folder.at("sub")), file_attribute::directory);
    EXPECT_EQ(files.attributes(folder.at("SUB\\")), file_attribute::directory);
    EXPECT_EQ(files.attributes("\\dev\\null"), file_attribute::system);
}

TEST_F(LocalFileSystemTest, SettingAttributesGivesAndTakesTheWriteBits) {
    const fs::path file = folder.write("file");
    fs::permissions(file, fs::perms(0664));
    files.setAttributes(folder.at("file"), file_attribute::readOnly);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0444));
    EXPECT_EQ(files.attributes(folder.at("file")), file_attribute::readOnly);
    files.setAttributes(folder.at("file"), file_attribute::normal);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0644));
    EXPECT_EQ(files.attributes(folder.at("file")), file_attribute::normal);
}

TEST_F(LocalFileSystemTest, SettingHiddenIsAMatterOfTheName) {
    folder.write("file");
    folder.write(".dot");
    EXPECT_EQ(numberOf([&] { files.setAttributes(folder.at("file"), file_attribute::hidden); }),
              failure_number::invalidCall);
    files.setAttributes(folder.at(".dot"), file_attribute::hidden | file_attribute::readOnly);
    EXPECT_EQ(files.attributes(folder.at(".dot")), file_attribute::hidden | file_attribute::readOnly);
    EXPECT_EQ(numberOf([&] { files.setAttributes(folder.at(".dot"), file_attribute::system); }),
              failure_number::invalidCall);
}

TEST_F(LocalFileSystemTest, DeletesWhatMatchesAndNothingElse) {
    folder.write("a.out");
    folder.write("B.OUT");
    folder.write("keep.txt");
    folder.write(".hidden.out");
    folder.makeFolder("sub.out");
    files.deleteMatching(folder.at("*.out"));
    EXPECT_FALSE(folder.has("a.out"));
    EXPECT_FALSE(folder.has("B.OUT"));
    EXPECT_TRUE(folder.has("keep.txt"));
    EXPECT_TRUE(folder.has(".hidden.out"));
    EXPECT_TRUE(folder.has("sub.out"));
}

TEST_F(LocalFileSystemTest, DeletesOneNameInAnyCase) {
    folder.write("Main.xml");
    files.deleteMatching(folder.at("MAIN.XML"));
    EXPECT_FALSE(folder.has("Main.xml"));
}

TEST_F(LocalFileSystemTest, DeletingByMaskStopsAtAReadOnlyFile) {
    folder.write("a.out");
    makeReadOnly("a.out");
    EXPECT_EQ(numberOf([&] { files.deleteMatching(folder.at("*.out")); }), failure_number::pathFileAccess);
    EXPECT_TRUE(folder.has("a.out"));
}

TEST_F(LocalFileSystemTest, DeletingByMaskNeverMeansAWholeFolder) {
    folder.write("file");
    for (const std::string& mask : {folder.at(""), std::string(), std::string("\\")}) {
        EXPECT_EQ(numberOf([&] { files.deleteMatching(mask); }), failure_number::fileNotFound) << mask;
    }
    EXPECT_TRUE(folder.has("file"));
}

TEST_F(LocalFileSystemTest, DeletingALinkLeavesItsTarget) {
    folder.write("target");
    makeReadOnly("target");
    fs::create_symlink("target", folder.path() / "link.out");
    fs::create_symlink("target", folder.path() / "other");
    fs::create_symlink("nowhere", folder.path() / "dangling");
    files.deleteMatching(folder.at("*.out"));
    files.deleteFile(folder.at("other"), Force::no);
    files.deleteFile(folder.at("dangling"), Force::no);
    EXPECT_FALSE(folder.has("link.out"));
    EXPECT_FALSE(folder.has("other"));
    EXPECT_FALSE(folder.has("dangling"));
    EXPECT_TRUE(folder.has("target"));
}

TEST_F(LocalFileSystemTest, TellsFilesFromFolders) {
    folder.write("file");
    folder.write(".dot");
    folder.makeFolder("sub");
    fs::create_symlink("sub", folder.path() / "link");
    EXPECT_TRUE(files.fileExists(folder.at("FILE")));
    EXPECT_TRUE(files.fileExists(folder.at(".dot")));
    EXPECT_FALSE(files.fileExists(folder.at("file\\")));
    EXPECT_FALSE(files.fileExists(folder.at("sub")));
    EXPECT_FALSE(files.fileExists(folder.at("none")));
    EXPECT_FALSE(files.fileExists(""));
    EXPECT_TRUE(files.folderExists(folder.at("Sub")));
    EXPECT_TRUE(files.folderExists(folder.at("sub\\")));
    EXPECT_TRUE(files.folderExists(folder.at("link")));
    EXPECT_TRUE(files.folderExists("\\"));
    EXPECT_FALSE(files.folderExists(folder.at("file")));
    EXPECT_FALSE(files.folderExists(folder.at("none")));
    EXPECT_FALSE(files.folderExists(""));
    EXPECT_FALSE(files.folderExists(std::string("a\0b", 3)));
}

TEST_F(LocalFileSystemTest, WalksGiveFullPathsHiddenOnesToo) {
    folder.write("Top/file");
    folder.write("Top/.dot");
    folder.write("Top/sub/deep");
    folder.makeFolder("Top/.subdot");
    EXPECT_EQ(sorted(files.filesIn(folder.at("top"))),
              (Names{folder.at("Top\\.dot"), folder.at("Top\\file")}));
    EXPECT_EQ(sorted(files.subFoldersOf(folder.at("top\\"))),
              (Names{folder.at("Top\\.subdot"), folder.at("Top\\sub")}));
}

TEST_F(LocalFileSystemTest, TypeNameFollowsTheExtension) {
    const std::pair<const char*, const char*> rows[] = {
        {"a.txt", "Text Document"}, {"b.TXT", "Text Document"}, {"c.Txt", "Text Document"},
        {".txt", "Text Document"},  {"d.xml", "XML File"},      {"e.tar.gz", "GZ File"},
        {"README", "File"},         {"dot.", "File"},           {"txt", "File"},
    };
    for (const auto& [name, type] : rows) {
        folder.write(name);
        EXPECT_EQ(files.typeName(folder.at(name)), type) << name;
    }
}

TEST_F(LocalFileSystemTest, DeletesOneFileAndAReadOnlyOneOnlyByForce) {
    folder.write("file");
    folder.write("locked");
    makeReadOnly("locked");
    files.deleteFile(folder.at("FILE"), Force::no);
    EXPECT_FALSE(folder.has("file"));
    EXPECT_EQ(numberOf([&] { files.deleteFile(folder.at("locked"), Force::no); }),
              failure_number::pathFileAccess);
    EXPECT_TRUE(folder.has("locked"));
    files.deleteFile(folder.at("locked"), Force::yes);
    EXPECT_FALSE(folder.has("locked"));
}

TEST_F(LocalFileSystemTest, DeletesAFolderWithAllItHolds) {
    folder.write("Top/sub/deeper/file");
    folder.write("Top/.dot");
    folder.write("Top/a\\b");
    files.deleteFolder(folder.at("top\\"), Force::no);
    EXPECT_FALSE(folder.has("Top"));
}

TEST_F(LocalFileSystemTest, DeletesAFolderDeeperThanThereAreOpenFiles) {
    fs::path level = folder.makeFolder("t");
    for (int depth = 0; depth < 300; ++depth) {
        level /= "d";
        fs::create_directory(level);
    }
    const FewOpenFiles fewer;
    files.deleteFolder(folder.at("t"), Force::no);
    EXPECT_FALSE(folder.has("t"));
}

TEST_F(LocalFileSystemTest, DeletingAFolderStopsAtAReadOnlyEntryWithoutForce) {
    folder.write("Top/locked");
    makeReadOnly("Top/locked");
    EXPECT_EQ(numberOf([&] { files.deleteFolder(folder.at("Top"), Force::no); }),
              failure_number::pathFileAccess);
    EXPECT_TRUE(folder.has("Top/locked"));
    files.deleteFolder(folder.at("Top"), Force::yes);
    EXPECT_FALSE(folder.has("Top"));
}

TEST_F(LocalFileSystemTest, ForceOpensReadOnlyFolders) {
    folder.write("Top/sub/file");
    makeReadOnly("Top/sub");
    EXPECT_EQ(numberOf([&] { files.deleteFolder(folder.at("Top"), Force::no); }),
              failure_number::pathFileAccess);
    EXPECT_TRUE(folder.has("Top/sub/file"));
    files.deleteFolder(folder.at("Top"), Force::yes);
    EXPECT_FALSE(folder.has("Top"));
}

TEST_F(LocalFileSystemTest, DeletingAFolderNeverFollowsALink) {
    folder.write("outside/precious");
    folder.makeFolder("Top");
    fs::create_symlink(folder.path() / "outside", folder.path() / "Top/link");
    fs::create_symlink(folder.path() / "outside", folder.path() / "direct");
    files.deleteFolder(folder.at("Top"), Force::yes);
    EXPECT_FALSE(folder.has("Top"));
    files.deleteFolder(folder.at("direct\\"), Force::yes);
    EXPECT_FALSE(folder.has("direct"));
    EXPECT_TRUE(folder.has("outside/precious"));
}

TEST_F(LocalFileSystemTest, RefusesToDeleteTheRootAndRelativeTops) {
    folder.write("file");
    fs::current_path(folder.path());
    for (const char* path : {"\\", ".", "..", ".\\"}) {
        EXPECT_EQ(numberOf([&] { files.deleteFolder(path, Force::no); }), failure_number::permissionDenied)
            << path;
    }
    EXPECT_TRUE(folder.has("file"));
}

TEST_F(LocalFileSystemTest, CreatesTheLastLevelOfAPath) {
    files.createFolder(folder.at("New"));
    EXPECT_TRUE(fs::is_directory(folder.path() / "New"));
    files.createFolder(folder.at("new\\Below\\"));
    EXPECT_TRUE(fs::is_directory(folder.path() / "New/Below"));
}

TEST_F(LocalFileSystemTest, TheCurrentFolderEndsInASeparator) {
    folder.makeFolder("Work");
    files.makeCurrent(folder.at("WORK"));
    EXPECT_EQ(files.currentFolder(), folder.at("Work\\"));
    EXPECT_EQ(fs::current_path(), folder.path() / "Work");
    files.makeCurrent("..");
    EXPECT_EQ(files.currentFolder(), folder.at(""));
    files.makeCurrent("\\");
    EXPECT_EQ(files.currentFolder(), "\\");
}

TEST_F(LocalFileSystemTest, ACurrentFolderThatIsGoneIsAFailure) {
    folder.makeFolder("gone");
    fs::current_path(folder.path() / "gone");
    fs::remove(folder.path() / "gone");
    EXPECT_EQ(numberOf([&] { (void)files.currentFolder(); }), failure_number::pathNotFound);
    EXPECT_EQ(numberOf([&] { (void)files.search("*", 0); }), failure_number::pathNotFound);
    EXPECT_FALSE(files.fileExists("x"));
}

TEST_F(LocalFileSystemTest, FailuresCarryTheClassicNumbers) {
    folder.write("file");
    folder.makeFolder("sub");
    const std::string file = folder.at("file");
    const std::string sub = folder.at("sub");
    const std::string none = folder.at("none");
    const std::string lost = folder.at("nowhere\\none");
    const std::string endless = folder.at(std::string(5000, 'x'));
    struct Row {
        const char* what;
        std::function<void()> operation;
        std::int32_t number;
    };
    const Row rows[] = {
        {"length of nothing", [&] { (void)files.fileLength(none); }, 53},
        {"length below nothing", [&] { (void)files.fileLength(lost); }, 53},
        {"length of a folder", [&] { (void)files.fileLength(sub); }, 53},
        {"length of no name", [&] { (void)files.fileLength(""); }, 53},
        {"length of a name too long", [&] { (void)files.fileLength(endless); }, 76},
        {"attributes of nothing", [&] { (void)files.attributes(none); }, 53},
        {"attributes below nothing", [&] { (void)files.attributes(lost); }, 76},
        {"attributes of no name", [&] { (void)files.attributes(""); }, 53},
        {"set on nothing", [&] { files.setAttributes(none, 0); }, 53},
        {"set below nothing", [&] { files.setAttributes(lost, 0); }, 76},
        {"set on a folder", [&] { files.setAttributes(sub, 0); }, 75},
        {"mask without match", [&] { files.deleteMatching(folder.at("*.none")); }, 53},
        {"mask in no folder", [&] { files.deleteMatching(folder.at("none\\*.*")); }, 53},
        {"mask on a folder", [&] { files.deleteMatching(sub); }, 53},
        {"files of nothing", [&] { (void)files.filesIn(none); }, 76},
        {"files of a file", [&] { (void)files.filesIn(file); }, 76},
        {"files of no name", [&] { (void)files.filesIn(""); }, 76},
        {"folders of nothing", [&] { (void)files.subFoldersOf(none); }, 76},
        {"type of nothing", [&] { (void)files.typeName(none); }, 53},
        {"type of a folder", [&] { (void)files.typeName(sub); }, 53},
        {"delete nothing", [&] { files.deleteFile(none, Force::no); }, 53},
        {"delete below nothing", [&] { files.deleteFile(lost, Force::yes); }, 76},
        {"delete a folder as a file", [&] { files.deleteFile(sub, Force::yes); }, 53},
        {"delete no name", [&] { files.deleteFile("", Force::no); }, 53},
        {"delete no folder", [&] { files.deleteFolder(none, Force::no); }, 76},
        {"delete a file as a folder", [&] { files.deleteFolder(file, Force::yes); }, 76},
        {"delete no folder name", [&] { files.deleteFolder("", Force::yes); }, 76},
        {"create what is there", [&] { files.createFolder(sub); }, 58},
        {"create over a file", [&] { files.createFolder(file); }, 58},
        {"create below nothing", [&] { files.createFolder(lost); }, 76},
        {"create below a file", [&] { files.createFolder(folder.at("file\\new")); }, 76},
        {"create no name", [&] { files.createFolder(""); }, 76},
        {"create a name too long", [&] { files.createFolder(endless); }, 76},
        {"go nowhere", [&] { files.makeCurrent(none); }, 76},
        {"go into a file", [&] { files.makeCurrent(file); }, 76},
        {"go into no name", [&] { files.makeCurrent(""); }, 76},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(numberOf(row.operation), row.number) << row.what;
    }
    EXPECT_TRUE(folder.has("file"));
    EXPECT_TRUE(folder.has("sub"));
}

TEST_F(LocalFileSystemTest, FailuresNameThePathAndTheSystemsWords) {
    try {
        files.createFolder(folder.at("no\\way"));
        FAIL() << "no failure";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.description(),
                  "Path not found: " + folder.at("no\\way") + " (No such file or directory)");
    }
}

TEST_F(LocalFileSystemTest, WhatTheSystemForbidsIsPermissionDenied) {
    const NoRootRights ordinary(folder.path());
    folder.write("closed/file");
    const fs::path closed = folder.path() / "closed";
    fs::permissions(closed, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(numberOf([&] { files.deleteFile(folder.at("closed\\file"), Force::yes); }), 70);
    EXPECT_EQ(numberOf([&] { files.deleteMatching(folder.at("closed\\*.*")); }), 70);
    EXPECT_EQ(numberOf([&] { files.createFolder(folder.at("closed\\new")); }), 70);
    EXPECT_EQ(numberOf([&] { files.setAttributes("\\dev\\null", file_attribute::readOnly); }), 70);
    fs::permissions(closed, fs::perms::none);
    EXPECT_EQ(numberOf([&] { (void)files.filesIn(folder.at("closed")); }), 70);
    EXPECT_EQ(numberOf([&] { (void)files.search(folder.at("closed\\*"), 0); }), 70);
    EXPECT_EQ(numberOf([&] { (void)files.fileLength(folder.at("closed\\file")); }), 70);
    EXPECT_EQ(numberOf([&] { files.makeCurrent(folder.at("closed")); }), 70);
    fs::permissions(closed, fs::perms::owner_all);
    EXPECT_TRUE(folder.has("closed/file"));
}

} // namespace
} // namespace quillport
