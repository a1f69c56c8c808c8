#include "platform/text.h"

#include "platform/failure.h"

#include <gtest/gtest.h>

namespace quillport {
namespace {

TEST(Text, CountsCharactersAndNotBytes) {
    EXPECT_EQ(text::length(""), 0);
    EXPECT_EQ(text::length("Ümlaut"), 6);
    EXPECT_EQ(text::length("\u20AC\U0001F4BE"), 2);
}

TEST(Text, CountsEachByteOfAnInvalidSequenceAsOneCharacter) {
    EXPECT_EQ(text::length("\xFF\xFE"), 2);
    EXPECT_EQ(text::length("a\xC3"), 2);
    EXPECT_EQ(text::length("\xE2\x82z"), 3);
}

TEST(Text, LeftRightAndBehindCutAtCharacters) {
    EXPECT_EQ(text::left("größe", 4), "größ");
    EXPECT_EQ(text::left("ab", 5), "ab");
    EXPECT_EQ(text::right("größe", 3), "öße");
    EXPECT_EQ(text::right("ab", 5), "ab");
    EXPECT_EQ(text::behind("größe", 3), "ße");
    EXPECT_EQ(text::behind("ab", 5), "");
}

TEST(Text, ANegativeCountIsAnInvalidCall) {
    const auto numberOf = [](auto&& call) {
        try {
            (void)call();
            return 0;
        } catch (const Failure& failure) {
            return failure.number();
        }
    };
    EXPECT_EQ(numberOf([] { return text::left("a", -1); }), failure_number::invalidCall);
    EXPECT_EQ(numberOf([] { return text::right("a", -1); }), failure_number::invalidCall);
    EXPECT_EQ(numberOf([] { return text::behind("a", -1); }), failure_number::invalidCall);
    EXPECT_EQ(numberOf([] { return text::left("a", 0); }), 0);
}

TEST(Text, PositionsCountFromOne) {
    EXPECT_EQ(text::find("größe.out", ".out"), 6);
    EXPECT_EQ(text::find("a.b.c", "."), 2);
    EXPECT_EQ(text::findLast("a.b.c", "."), 4);
    EXPECT_EQ(text::find("abc", "x"), 0);
    EXPECT_EQ(text::findLast("abc", "x"), 0);
    EXPECT_EQ(text::find("abc", "ABC"), 0);
}

TEST(Text, FoldedSearchIgnoresCase) {
    EXPECT_EQ(text::find("C:\\MyAPPLICATIONs\\", "Application", text::Case::folded), 6);
    EXPECT_EQ(text::findLast("\\Templates\\Old\\templates\\", "TEMPLATES", text::Case::folded), 16);
    EXPECT_EQ(text::find("STRASSE ÄÖÜ", "äöü", text::Case::folded), 9);
}

TEST(Text, ReplacesEveryOccurrence) {
    EXPECT_EQ(text::replace(" a  b ", " ", ""), "ab");
    EXPECT_EQ(text::replace("aaa", "aa", "b"), "ba");
    EXPECT_EQ(text::replace("abc", "", "x"), "abc");
}

TEST(Text, FoldsLettersOneForOne) {
    struct Pair {
        const char* capital;
        const char* small;
    };
    for (const Pair& pair : {Pair{"VXWORKS", "vxworks"}, Pair{"ÀÖØÞ", "àöøþ"}, Pair{"ĀĽŊŽ", "āľŋž"},
                             Pair{"ΑΩ", "αω"}, Pair{"АЯЁ", "аяё"}}) {
        EXPECT_EQ(text::lower(pair.capital), pair.small);
        EXPECT_EQ(text::upper(pair.small), pair.capital);
    }
}

TEST(Text, LeavesWhatIsNoLetterAsItIs) {
    for (const char* text : {"0123_-.", "×÷ß", "\xC0\xE0\xFF", "\u20AC", "ς"}) {
        EXPECT_EQ(text::lower(text), text);
        EXPECT_EQ(text::upper(text), text);
    }
}

} // namespace
} // namespace quillport
