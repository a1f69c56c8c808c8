#include "ftp/reply_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillport::ftp {
namespace {

std::vector<std::string> repliesIn(std::string_view bytes, std::size_t portion) {
    ReplyReader reader;
    std::vector<std::string> replies;
    for (std::size_t start = 0; start < bytes.size(); start += portion) {
        reader.feed(bytes.substr(start, portion));
        while (const auto reply = reader.next()) {
            replies.push_back(std::to_string(reply->code) + "|" + reply->words);
        }
    }
    return replies;
}

using Replies = std::vector<std::string>;

TEST(ReplyReader, PutsRepliesTogether) {
    const struct {
        std::string_view bytes;
        Replies expected;
    } rows[] = {
        {"220 ready\r\n", {"220|220 ready"}},
        {"220 ready\n", {"220|220 ready"}},
        {"220\r\n", {"220|220"}},
        {"220 ready", {}},
        {"150 coming\r\n226 done\r\n", {"150|150 coming", "226|226 done"}},
        {"220-first\r\nsecond\r\n220 last\r\n", {"220|220 last"}},
        {"220-first\r\n221 another code\r\n220-still\r\n220 last\r\n", {"220|220 last"}},
        {"220-first\r\n220\r\n", {"220|220"}},
        {"220-first\r\n 220 indented\r\n", {}},
        {"hello\r\n220 ready\r\n", {"0|hello", "220|220 ready"}},
        {"22 x\r\n", {"0|22 x"}},
        {"620 x\r\n", {"0|620 x"}},
        {"020 x\r\n", {"0|020 x"}},
        {"2200 x\r\n", {"0|2200 x"}},
        {"220_x\r\n", {"0|220_x"}},
        {"\r\n", {"0|"}},
    };
    for (const auto& row : rows) {
        for (std::size_t portion = 1; portion <= row.bytes.size(); ++portion) {
            EXPECT_EQ(repliesIn(row.bytes, portion), row.expected)
                << row.bytes << " in portions of " << portion;
        }
    }
}

TEST(ReplyReader, GivesUpOnEndlessReplies) {
    const std::string endless = "220-first\r\n" + std::string(ReplyReader::longestReply, 'x');
    EXPECT_EQ(repliesIn(endless, 1000), Replies{"0|an endless reply"});
}

TEST(Reply, TellsItsClass) {
    EXPECT_TRUE((Reply{150, ""}.isPreliminary()));
    EXPECT_TRUE((Reply{226, ""}.isSuccess()));
    EXPECT_TRUE((Reply{350, ""}.wantsMore()));
    EXPECT_FALSE((Reply{0, ""}.isSuccess()));
    EXPECT_FALSE((Reply{550, ""}.isSuccess()));
}

} // namespace
} // namespace quillport::ftp
