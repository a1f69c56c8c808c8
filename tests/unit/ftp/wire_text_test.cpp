#include "ftp/wire_text.h"

#include <gtest/gtest.h>

namespace quillport::ftp {
namespace {

TEST(WireText, KnowsValidUtf8) {
    for (const std::string_view text :
         {"", "plain", "\xc3\x9c", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
    for (const std::string_view bytes :
         {"\xe9", "caf\xe9", "\x80", "\xc3", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
          "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xe2\x82", "\xc3\x28"}) {
        EXPECT_FALSE(isUtf8(bytes)) << bytes;
    }
}

TEST(WireText, ReadsOtherBytesAsLatin1) {
    EXPECT_EQ(decoded("caf\xe9"), "caf\xc3\xa9");
    EXPECT_EQ(decoded("\xdc"
                      "bersicht"),
              "\xc3\x9c"
              "bersicht");
    EXPECT_EQ(decoded("\xc3\x9c"
                      "bersicht"),
              "\xc3\x9c"
              "bersicht");
    EXPECT_EQ(decoded("\xff"), "\xc3\xbf");
}

TEST(WireText, MakesWordsFitForAMessage) {
    EXPECT_EQ(presentable("550 \x1b[2J no\r"), "550 ?[2J no?");
    EXPECT_EQ(presentable("550 caf\xe9"), "550 caf\xc3\xa9");
    EXPECT_LE(presentable(std::string(5000, 'x')).size(), 500U);
}

TEST(WireText, HidesTheSecret) {
    EXPECT_EQ(withoutSecret("530 PASS geheim geheim", "geheim"),
              "530 PASS [password hidden] [password hidden]");
    EXPECT_EQ(withoutSecret("530 no", "geheim"), "530 no");
    EXPECT_EQ(withoutSecret("530 no", ""), "530 no");
    EXPECT_EQ(withoutSecret("password", "password"), "[password hidden]");
}

} // namespace
} // namespace quillport::ftp
