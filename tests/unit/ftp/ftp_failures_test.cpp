#include "ftp/ftp_failures.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

namespace quillport::ftp {
namespace {

TEST(FtpFailures, EveryNumberOfTheTableHasItsOwnText) {
    std::set<std::string> texts;
    for (std::int32_t number = ftp_failure::internalError; number <= ftp_failure::treeTooLarge; ++number) {
        const std::string text = failureText(number);
        EXPECT_EQ(text.find("Unknown"), std::string::npos) << std::hex << number;
        EXPECT_TRUE(texts.insert(text).second) << "twice: " << text;
    }
    EXPECT_EQ(texts.size(), 0x1dU);
}

TEST(FtpFailures, OtherNumbersHaveATextToo) {
    EXPECT_EQ(failureText(0), "No error");
    EXPECT_EQ(failureText(ftp_failure::treeTooLarge + 1), "Unknown FTP client error 0x8004201D");
    EXPECT_EQ(failureText(-1), "Unknown FTP client error 0xFFFFFFFF");
    EXPECT_EQ(failureText(std::numeric_limits<std::int32_t>::max()), "Unknown FTP client error 0x7FFFFFFF");
    EXPECT_EQ(failureText(std::numeric_limits<std::int32_t>::min()), "Unknown FTP client error 0x80000000");
}

TEST(FtpFailures, TheControlsTwoNumbersStandAsItKnowsThem) {
    EXPECT_EQ(ftp_failure::noSuchRemoteName, -2147213293);
    EXPECT_EQ(ftp_failure::unexpectedAnswer, -2147213299);
}

TEST(FtpFailures, CarryWhatTheyAreAbout) {
    const Failure about = failure(ftp_failure::noSuchRemoteName, "550 not found");
    EXPECT_EQ(about.number(), ftp_failure::noSuchRemoteName);
    EXPECT_EQ(about.description(), "There is no such file or folder on the FTP server (550 not found)");
    EXPECT_EQ(failure(ftp_failure::busy).description(), "The FTP client is busy with another call");
}

TEST(FtpFailures, RepliesAreTranslatedOnce) {
    const struct {
        int code;
        std::string_view words;
        Purpose purpose;
        std::int32_t expected;
    } rows[] = {
        {421, "421 closing", Purpose::login, ftp_failure::tooManyLogins},
        {421, "421 closing", Purpose::fetch, ftp_failure::linkLost},
        {425, "425 no", Purpose::fetch, ftp_failure::dataConnectionFailed},
        {426, "426 closed", Purpose::fetch, ftp_failure::transferEndedByServer},
        {451, "451 local error", Purpose::store, ftp_failure::transferEndedByServer},
        {451, "451 local error", Purpose::change, ftp_failure::commandRefused},
        {452, "452 no space", Purpose::store, ftp_failure::serverStorageFull},
        {552, "552 no space", Purpose::store, ftp_failure::serverStorageFull},
        {530, "530 no", Purpose::login, ftp_failure::loginRefused},
        {332, "332 account", Purpose::login, ftp_failure::loginRefused},
        {550, "550 no", Purpose::login, ftp_failure::loginRefused},
        {550, "550 File not found", Purpose::fetch, ftp_failure::noSuchRemoteName},
        {550, "550 Permission denied", Purpose::fetch, ftp_failure::accessRefused},
        {550, "550 No such file: permission denied", Purpose::fetch, ftp_failure::noSuchRemoteName},
        {550, "550 refused", Purpose::fetch, ftp_failure::noSuchRemoteName},
        {550, "550 refused", Purpose::find, ftp_failure::noSuchRemoteName},
        {550, "550 refused", Purpose::store, ftp_failure::accessRefused},
        {550, "550 refused", Purpose::change, ftp_failure::accessRefused},
        {550, "550 no such directory", Purpose::store, ftp_failure::noSuchRemoteName},
        {450, "450 file busy", Purpose::fetch, ftp_failure::accessRefused},
        {553, "553 bad name", Purpose::store, ftp_failure::nameRefused},
        {553, "553 permission denied", Purpose::store, ftp_failure::accessRefused},
        {500, "500 what", Purpose::change, ftp_failure::commandRefused},
        {599, "599 what", Purpose::change, ftp_failure::commandRefused},
        {200, "200 what", Purpose::fetch, ftp_failure::unexpectedAnswer},
        {350, "350 what", Purpose::change, ftp_failure::unexpectedAnswer},
        {0, "nonsense", Purpose::change, ftp_failure::unexpectedAnswer},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(numberForReply(row.code, row.words, row.purpose), row.expected) << row.words;
    }
}

TEST(FtpFailures, OutcomesOfLibcurlAreTranslatedOnce) {
    EXPECT_EQ(numberForConnect(CURLE_COULDNT_RESOLVE_HOST), ftp_failure::hostUnknown);
    EXPECT_EQ(numberForConnect(CURLE_COULDNT_CONNECT), ftp_failure::connectionRefused);
    EXPECT_EQ(numberForConnect(CURLE_OPERATION_TIMEDOUT), ftp_failure::connectTimedOut);
    EXPECT_EQ(numberForConnect(CURLE_URL_MALFORMAT), ftp_failure::badArgument);
    EXPECT_EQ(numberForConnect(CURLE_OUT_OF_MEMORY), ftp_failure::internalError);
}

TEST(FtpFailures, KnowsWordsThatTellTheCause) {
    EXPECT_TRUE(wordsTellCause("550 File Not Found"));
    EXPECT_TRUE(wordsTellCause("550 PERMISSION DENIED"));
    EXPECT_TRUE(wordsTellCause("550 Directory non existent or syntax error"));
    EXPECT_FALSE(wordsTellCause("550 Could not delete file"));
}

} // namespace
} // namespace quillport::ftp
