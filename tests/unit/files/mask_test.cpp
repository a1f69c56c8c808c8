#include "files/mask.h"

#include <gtest/gtest.h>

#include <string>

namespace quillport {

TEST(Mask, MatchesAsTheOperatorsFileSystemWould) {
    struct Row {
        const char* name;
        const char* mask;
        bool matches;
    };
    const Row rows[] = {
        {"a.xml", "*.xml", true},
        {"A.XML", "*.xml", true},
        {"a.xml", "*.XML", true},
        {"a.xmlx", "*.xml", false},
        {"a.xml", "a.xml", true},
        {"a.xml", "b.xml", false},
        {"README", "*.*", true},
        {"a.b.c", "*.*", true},
        {".hidden", "*.*", true},
        {"README", "*", true},
        {"README", "*.", false},
        {"README", "R*E", true},
        {"README", "R*X", false},
        {"ab", "?", false},
        {"a", "?", true},
        {"\xC3\xA9", "?", true},
        {"\xC3\xA9", "??", false},
        {"\xC3\x89t\xC3\xA9.txt", "\xC3\xA9T?.TXT", true},
        {"\xE4\xB8\xAD\xE6\x96\x87.txt", "??.txt", true},
        {"", "*", true},
        {"", "?", false},
        {"", "", true},
        {"a", "", false},
        {"aXbXc", "a*X*c", true},
        {"abcabd", "*abd", true},
        {"K5902-041.out", "K590?-0?1.out", true},
        {"a[b]", "a[b]", true},
        {"ab", "a[b]", false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(matchesMask(row.name, row.mask), row.matches) << row.name << " against " << row.mask;
    }
}

TEST(Mask, TakesNoLongerThanNameTimesMask) {
    // One step back for each star would be beyond any patience here.
    const std::string name(250, 'a');
    std::string mask;
    for (int star = 0; star < 60; ++star) {
        mask += "*a";
    }
    EXPECT_FALSE(matchesMask(name, mask + "*b"));
}

TEST(Mask, IsToldByItsCharacters) {
    EXPECT_TRUE(isMask("*.xml"));
    EXPECT_TRUE(isMask("a?"));
    EXPECT_FALSE(isMask("a.xml"));
    EXPECT_FALSE(isMask(""));
}

} // namespace quillport
