#include "ftp/local_files.h"

#include "ftp/ftp_failures.h"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <string>

namespace quillport::ftp {
namespace {

namespace fs = std::filesystem;

class LocalFilesTest : public testing::Test {
protected:
    void SetUp() override { fs::create_directories(folder); }
    void TearDown() override { fs::remove_all(folder); }

    /// A path below the test's folder as the control spells it.
    [[nodiscard]] std::string control(const std::string& below) const {
        std::string path = (folder / below).string();
        for (char& c : path) {
            c = c == '/' ? '\\' : c;
        }
        return path;
    }
    void write(const std::string& below, const std::string& contents) const {
        std::ofstream(folder / below, std::ios::binary) << contents;
    }
    [[nodiscard]] std::string read(const std::string& below) const {
        std::ifstream file(folder / below, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }
    static std::int32_t numberOf(const std::function<void()>& statement) {
        try {
            statement();
        } catch (const Failure& problem) {
            return problem.number();
        }
        return 0;
    }

    fs::path folder = fs::temp_directory_path() /
                      ("quillport-local-" + std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "-" +
                       testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(LocalFilesTest, JoinsWithOneSeparator) {
    EXPECT_EQ(localJoined("\\a", "b"), "\\a\\b");
    EXPECT_EQ(localJoined("\\a\\", "b"), "\\a\\b");
    EXPECT_EQ(localJoined("/a/", "b"), "/a/b");
    EXPECT_EQ(localJoined("", "b"), "b");
}

TEST_F(LocalFilesTest, AFileTakesItsPlaceOnlyWhenItIsWhole) {
    write("target", "old");
    {
        ReceivedFile file(control("target"));
        file.write("new");
        EXPECT_EQ(read("target"), "old");
        EXPECT_EQ(entries(), 2U);
    }
    EXPECT_EQ(read("target"), "old");
    EXPECT_EQ(entries(), 1U);
    {
        ReceivedFile file(control("target"));
        file.write("new");
        file.takeTargetsPlace();
    }
    EXPECT_EQ(read("target"), "new");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(LocalFilesTest, ANameOfFullLengthWorks) {
    const std::string longName(255, 'n');
    ReceivedFile file(control(longName));
    file.write("x");
    file.takeTargetsPlace();
    EXPECT_EQ(read(longName), "x");
}

TEST_F(LocalFilesTest, AnExistingFileKeepsItsOwnCase) {
    write("Name.TXT", "old");
    ReceivedFile file(control("name.txt"));
    file.write("new");
    file.takeTargetsPlace();
    EXPECT_EQ(read("Name.TXT"), "new");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(LocalFilesTest, RefusesWhatCannotBeReplaced) {
    fs::create_directory(folder / "sub");
    EXPECT_EQ(numberOf([&] { ReceivedFile file(control("sub")); }), ftp_failure::localFileNotWritable);
    EXPECT_EQ(numberOf([&] { ReceivedFile file(control("")); }), ftp_failure::badArgument);
    write("plain", "");
    EXPECT_EQ(numberOf([&] { ReceivedFile file(control("plain/below")); }),
              ftp_failure::localFileNotWritable);
    write("kept", "old");
    fs::permissions(folder / "kept", fs::perms::owner_read);
    EXPECT_EQ(numberOf([&] { ReceivedFile file(control("kept")); }), ftp_failure::localFileNotWritable);
    EXPECT_EQ(read("kept"), "old");
}

TEST_F(LocalFilesTest, AFileMadeReadOnlyMeanwhileIsNotReplaced) {
    write("target", "old");
    ReceivedFile file(control("target"));
    fs::permissions(folder / "target", fs::perms::owner_read);
    EXPECT_EQ(numberOf([&] { file.takeTargetsPlace(); }), ftp_failure::localFileNotWritable);
    EXPECT_EQ(read("target"), "old");
}

TEST_F(LocalFilesTest, ALinkLaidInTheWayOfTheTemporaryLeadsNowhere) {
    write("victim", "precious");
    fs::create_symlink(folder / "victim", folder / ".target.quillport-part");
    ReceivedFile file(control("target"));
    file.write("x");
    file.takeTargetsPlace();
    EXPECT_EQ(read("victim"), "precious");
    EXPECT_EQ(read("target"), "x");
}

TEST_F(LocalFilesTest, ReadsAFileToItsEnd) {
    write("file", std::string(100000, 'x'));
    const LocalFile planned = localFileAt(folder / "file", control("file"));
    EXPECT_EQ(planned.size, 100000);
    SentFile sent(planned);
    std::size_t total = 0;
    for (auto block = sent.next(); !block.empty(); block = sent.next()) {
        total += block.size();
    }
    EXPECT_EQ(total, 100000U);
}

TEST_F(LocalFilesTest, NoticesAFileThatChangesWhileItIsRead) {
    const struct {
        const char* what;
        std::function<void()> change;
    } rows[] = {
        {"grows", [&] { std::ofstream(folder / "file", std::ios::app) << "more"; }},
        {"shrinks", [&] { fs::resize_file(folder / "file", 70000); }},
        {"vanishes", [&] { fs::remove(folder / "file"); }},
        {"is written",
         [&] {
             fs::last_write_time(folder / "file", fs::file_time_type::clock::now() + std::chrono::hours(1));
         }},
    };
    for (const auto& row : rows) {
        write("file", std::string(100000, 'x'));
        const LocalFile planned = localFileAt(folder / "file", control("file"));
        SentFile sent(planned);
        EXPECT_FALSE(sent.next().empty());
        row.change();
        EXPECT_EQ(numberOf([&] {
                      while (!sent.next().empty()) {
                      }
                  }),
                  ftp_failure::localFileChanged)
            << row.what;
    }
}

TEST_F(LocalFilesTest, RefusesWhatIsNoPlainFile) {
    EXPECT_EQ(numberOf([&] { (void)localFileAt(folder / "none", "none"); }),
              ftp_failure::localFileNotReadable);
    EXPECT_EQ(numberOf([&] { (void)localFileAt(folder, "folder"); }), ftp_failure::localFileNotReadable);
}

} // namespace
} // namespace quillport::ftp
