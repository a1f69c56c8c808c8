#include "files/LocalFileSystem.h"
#include "files/native_path.h"
#include "platform/failure.h"
#include "terminal/CommandRecord.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace quillport {
namespace {

class CommandRecordTest : public testing::Test {
protected:
    CommandRecordTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quillport-record-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~CommandRecordTest() override { std::filesystem::remove_all(folder); }

    std::string file(const char* name, std::size_t size) {
        std::ofstream(folder / name) << std::string(size, 'x');
        return controlPath(folder / name);
    }

    std::filesystem::path folder;
    LocalFileSystem files;
    CommandRecord record;
};

TEST_F(CommandRecordTest, keepsTheFirstFailureUntilTheNextBeginning) {
    const Failure first(-1, "first");
    const Failure second(-2, "second");
    record.callReturned("ftpState", {}, nullptr);
    EXPECT_FALSE(record.failedCall());
    record.callReturned("ftpChangeFolder", {}, &first);
    record.callReturned("ftpListFolder", {}, &second);
    ASSERT_TRUE(record.failedCall());
    EXPECT_EQ(record.failedCall()->name, "ftpChangeFolder");
    EXPECT_EQ(record.failedCall()->description, "first");
    record.begin();
    EXPECT_FALSE(record.failedCall());
}

TEST_F(CommandRecordTest, countsFilesAndFindsOneThatIsNotWhole) {
    record.fileStarted({TransferDirection::received, file("whole", 7), 7});
    record.fileStarted({TransferDirection::sent, "\\nowhere", 7});
    EXPECT_EQ(record.filesStarted(), 2);
    EXPECT_EQ(record.incompleteFile(files), std::nullopt);

    const std::string cut = file("cut", 3);
    record.fileStarted({TransferDirection::received, cut, 7});
    EXPECT_EQ(record.incompleteFile(files), cut);

    // Fetched once more, and whole this time.
    file("cut", 7);
    record.fileStarted({TransferDirection::received, cut, 7});
    EXPECT_EQ(record.incompleteFile(files), std::nullopt);

    const std::string missing = controlPath(folder / "missing");
    record.fileStarted({TransferDirection::received, missing, 7});
    EXPECT_EQ(record.incompleteFile(files), missing);
    record.begin();
    EXPECT_EQ(record.incompleteFile(files), std::nullopt);
}

TEST_F(CommandRecordTest, findsASentFileThatTheRtuDoesNotListAsItWasSent) {
    const auto listed = [this](std::string_view name, std::int64_t size) {
        const FtpArgument item[] = {name, DateTime{}, size, std::int64_t{0}, std::string_view()};
        record.eventDelivered("OnFtpListItem", item);
    };
    record.fileStarted({TransferDirection::received, "\\home\\op\\other", 5});
    EXPECT_EQ(record.unlistedFile(), std::nullopt);

    listed("vxworks", 7); // from before it was sent
    record.fileStarted({TransferDirection::sent, "\\home\\op\\vxworks", 7});
    EXPECT_EQ(record.unlistedFile(), "vxworks");
    listed("vxworks", 3);
    EXPECT_EQ(record.unlistedFile(), "vxworks");
    listed("VXWORKS", 7); // an RTU may list names in another case
    EXPECT_EQ(record.unlistedFile(), std::nullopt);

    // Of several, each has to be in the listings behind the last one.
    record.fileStarted({TransferDirection::sent, "\\home\\op\\WebCli", 2});
    listed("WebCli", 2);
    EXPECT_EQ(record.unlistedFile(), "vxworks");
    listed("vxworks", 7);
    EXPECT_EQ(record.unlistedFile(), std::nullopt);
    record.begin();
    EXPECT_EQ(record.unlistedFile(), std::nullopt);
}

} // namespace
} // namespace quillport
