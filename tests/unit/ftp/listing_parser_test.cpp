#include "ftp/listing_parser.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quillport::ftp {
namespace {

const DateTime now = makeDateTime(2018, 11, 20, 12, 0, 0);

/// An entry as one line of text, so that a difference is read at a glance.
std::string rendered(const std::optional<ListingLine>& entry) {
    if (!entry) {
        return "rejected";
    }
    const std::chrono::year_month_day day{std::chrono::floor<std::chrono::days>(entry->date)};
    const std::chrono::hh_mm_ss time{entry->date - std::chrono::floor<std::chrono::days>(entry->date)};
    const auto two = [](long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    std::string text(1, "FDLO"[static_cast<int>(entry->kind)]);
    text += " " + std::to_string(entry->size) + " " + std::to_string(static_cast<int>(day.year())) + "-" +
            two(static_cast<long>(static_cast<unsigned>(day.month()))) + "-" +
            two(static_cast<long>(static_cast<unsigned>(day.day()))) + " " + two(time.hours().count()) + ":" +
            two(time.minutes().count()) + ":" + two(time.seconds().count()) + " [" +
            std::string(entry->name) + "]";
    if (!entry->linkTarget.empty()) {
        text += " -> [" + std::string(entry->linkTarget) + "]";
    }
    return text;
}

struct Row {
    std::string_view line;
    std::string_view expected;
};

void check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(rendered(parseListingLine(row.line, now)), row.expected) << "line: " << row.line;
    }
}

void expectRejected(const std::vector<std::string_view>& lines) {
    for (const std::string_view line : lines) {
        EXPECT_EQ(rendered(parseListingLine(line, now)), "rejected") << "line: " << line;
    }
}

TEST(ListingParser, ReadsTheTableOfVxWorks) {
    check({
        {"  307200    Sep-30-2015  11:05:42   K5902-041A.out    ",
         "F 307200 2015-09-30 11:05:42 [K5902-041A.out]"},
        {"    2048    Oct-02-2015  08:15:00   webfiles          <DIR>",
         "D 2048 2015-10-02 08:15:00 [webfiles]"},
        {"    2048    OCT-02-2015  08:15:00   ISAGRAF           <DIR>",
         "D 2048 2015-10-02 08:15:00 [ISAGRAF]"},
        {"    2048    Jan-01-1980  00:00:00   A folder whose name is longer than the column  <DIR>",
         "D 2048 1980-01-01 00:00:00 [A folder whose name is longer than the column]"},
        {"      12    jan-01-1970  00:00:00   Event Lists.xml   ",
         "F 12 1970-01-01 00:00:00 [Event Lists.xml]"},
        {"    2048    Jan-01-1980  00:00:00   ..                <DIR>", "D 2048 1980-01-01 00:00:00 [..]"},
        {"3000000000    Feb-29-2016  23:59:59   big", "F 3000000000 2016-02-29 23:59:59 [big]"},
        {"-1294967296    Feb-29-2016  23:59:59   big", "F 3000000000 2016-02-29 23:59:59 [big]"},
        {"       0    ???"
         "-00-1980  00:00:00   noclock",
         "F 0 1970-01-01 00:00:00 [noclock]"},
        {"       0    Jan-00-1980  00:00:00   noday", "F 0 1970-01-01 00:00:00 [noday]"},
        {"       5    Jan-01-1999  00:00:00   x<DIR>", "F 5 1999-01-01 00:00:00 [x<DIR>]"},
        {"99999999999999999999    Jan-01-1999  00:00:00   x",
         "F 9223372036854775807 1999-01-01 00:00:00 [x]"},
        {"5 Jan-01-1999 00:00:00 x", "F 5 1999-01-01 00:00:00 [x]"},
    });
    expectRejected({
        "  size          date       time       name",
        "--------       ------     ------    --------",
        "Can't open \"/ata0a/none\".",
        "error reading entry: 16",
        "  307200    Sep-30-2015  11:05:42   ",
        "    2048    Sep-30-2015  11:05:42   <DIR>",
        "    2048    Sep-30-2015  11:05:42                     <DIR>",
        "  307200    Sept-30-2015  11:05:42   x",
        "  307200    Foo-30-2015  11:05:42   x",
        "  307200    Sep-31-2015  11:05:42   x",
        "  307200    Feb-29-2015  11:05:42   x",
        "  307200    Sep-30-15  11:05:42   x",
        "  307200    Sep-30-2015  24:05:42   x",
        "  307200    Sep-30-2015  11:65:42   x",
        "  307200    Sep-30-2015  11:05:4   x",
        "  307200    Sep/30/2015  11:05:42   x",
        "  3072x0    Sep-30-2015  11:05:42   x",
        "-9999999999    Sep-30-2015  11:05:42   x",
        "-    Sep-30-2015  11:05:42   x",
        "Sep-30-2015  11:05:42   x",
    });
}

TEST(ListingParser, ReadsLinesLikeThoseOfLs) {
    check({
        {"-rw-r--r--   1 root     root         3961 Nov 18 19:55 name.xml",
         "F 3961 2018-11-18 19:55:00 [name.xml]"},
        {"-rw-r--r--   1 root     root         3961 Nov 20 12:00 at the very moment",
         "F 3961 2018-11-20 12:00:00 [at the very moment]"},
        {"-rw-r--r--   1 root     root         3961 Nov 20 12:01 a minute ahead",
         "F 3961 2017-11-20 12:01:00 [a minute ahead]"},
        {"-rw-r--r--   1 root     root         3961 Dec 31 23:59 last year",
         "F 3961 2017-12-31 23:59:00 [last year]"},
        {"-rw-r--r--   1 root     root         3961 Feb 29 10:00 leap day",
         "F 3961 2016-02-29 10:00:00 [leap day]"},
        {"drwxrwxrwx   2 root     root         2048 NOV 18  2004 WEBFILES",
         "D 2048 2004-11-18 00:00:00 [WEBFILES]"},
        {"-rwxrwxrwx   1 root     3961 Jan  1  1980 no group", "F 3961 1980-01-01 00:00:00 [no group]"},
        {"-rwxrwxrwx   3961 Jan  1  1980 neither owner nor group",
         "F 3961 1980-01-01 00:00:00 [neither owner nor group]"},
        {"-rwxrwxrwx   1 0        0            3961 18 Nov 2004 day first",
         "F 3961 2004-11-18 00:00:00 [day first]"},
        {"-rwxrwxrwx   1 0        0            3961 18 nov 19:55 day first",
         "F 3961 2018-11-18 19:55:00 [day first]"},
        {"-rw-r--r--   1 user name with blanks 12 Nov 18 2004 x", "F 12 2004-11-18 00:00:00 [x]"},
        {"-rw-r--r--   1 may 5 12 Nov 18 2004 owner may, group 5",
         "F 12 2004-11-18 00:00:00 [owner may, group 5]"},
        {"-rw-r--r--   1 root root 12 Nov 18 2004 3 Jan 1 1999 y",
         "F 12 2004-11-18 00:00:00 [3 Jan 1 1999 y]"},
        {"-rw-r--r--+  1 root root 12 Nov 18 2004 acl", "F 12 2004-11-18 00:00:00 [acl]"},
        {"-rw-r--r--@  1 root root 12 Nov 18 2004 attributes", "F 12 2004-11-18 00:00:00 [attributes]"},
        {"-rw-r--r--.  1 root root 12 Nov 18 2004 context", "F 12 2004-11-18 00:00:00 [context]"},
        {"-rwsr-sr-T   1 root root 12 Nov 18 2004 special bits", "F 12 2004-11-18 00:00:00 [special bits]"},
        {"crw-rw-rw-   1 root root 1,   3 Jan  1  1980 null", "O 0 1980-01-01 00:00:00 [null]"},
        {"brw-rw----   1 root disk 8,0 Jan  1  1980 sda", "O 0 1980-01-01 00:00:00 [sda]"},
        {"prw-r--r--   1 root root 0 Jan  1  1980 pipe", "O 0 1980-01-01 00:00:00 [pipe]"},
        {"srw-r--r--   1 root root 0 Jan  1  1980 socket", "O 0 1980-01-01 00:00:00 [socket]"},
        {"lrwxrwxrwx   1 root root 7 Jan  1  1980 link -> target",
         "L 7 1980-01-01 00:00:00 [link] -> [target]"},
        {"lrwxrwxrwx   1 root root 7 Jan  1  1980 silent link", "L 7 1980-01-01 00:00:00 [silent link]"},
        {"-rw-r--r--   1 root root 7 Jan  1  1980 a -> b", "F 7 1980-01-01 00:00:00 [a -> b]"},
        {"-rw-r--r--   1 root root 7 2004-11-18 19:55 long-iso", "F 7 2004-11-18 19:55:00 [long-iso]"},
        {"-rw-r--r--   1 root root 7 2004-11-18 19:55:01.123456789 +0100 full-iso",
         "F 7 2004-11-18 19:55:01 [full-iso]"},
        {"-rw-r--r--   1 root root 7 Jan  1 9:05 short hour", "F 7 2018-01-01 09:05:00 [short hour]"},
        {"-rw-r--r--   1 root root 99999999999999999999 Jan  1  1980 huge",
         "F 9223372036854775807 1980-01-01 00:00:00 [huge]"},
    });
    expectRejected({
        "total 1234",
        "",
        "   ",
        "-rw-r--r--",
        "-rw-r--r--   1 root     root         3961 Nov 18 19:55",
        "-rw-r--r--   1 root     root         3961 Nov 18 19:55 ",
        "-rw-r--r--   1 root     root         3961 Nov 31 2004 x",
        "-rw-r--r--   1 root     root         3961 Nov 0 2004 x",
        "-rw-r--r--   1 root     root         3961 Nov 18 04 x",
        "-rw-r--r--   1 root     root         3961 Nov 18 25:55 x",
        "-rw-r--r--   1 root     root         size Nov 18 2004 x",
        "-rw-r--r     1 root     root         3961 Nov 18 2004 x",
        "-rw-r--r--++ 1 root     root         3961 Nov 18 2004 x",
        "-rw-r--r--!  1 root     root         3961 Nov 18 2004 x",
        "xrw-r--r--   1 root     root         3961 Nov 18 2004 x",
        "-ru-r--r--   1 root     root         3961 Nov 18 2004 x",
        "lrwxrwxrwx   1 root     root            7 Jan  1  1980  -> target",
        "drwxr-xr-x: cannot open directory",
    });
}

TEST(ListingParser, ReadsLinesLikeThoseOfDos) {
    check({
        {"04-11-18 19:55AM   3961 name", "F 3961 2018-04-11 19:55:00 [name]"},
        {"01-01-01 01:01AM  <DIR>  .", "D 0 2001-01-01 01:01:00 [.]"},
        {"01-01-80 00:00AM  <DIR>  Event Lists", "D 0 1980-01-01 00:00:00 [Event Lists]"},
        {"01-01-69  07:55PM                 3961 afternoon.xml",
         "F 3961 2069-01-01 19:55:00 [afternoon.xml]"},
        {"01-01-70  12:05AM                 3961 midnight", "F 3961 1970-01-01 00:05:00 [midnight]"},
        {"01-01-99  12:05PM                 3961 noon", "F 3961 1999-01-01 12:05:00 [noon]"},
        {"04-11-2018  19:55       <DIR>          four digits", "D 0 2018-04-11 19:55:00 [four digits]"},
        {"04/11/2018  19:55:30       12 slashes", "F 12 2018-04-11 19:55:30 [slashes]"},
        {"04-11-18 19:55am   3961 name", "F 3961 2018-04-11 19:55:00 [name]"},
    });
    expectRejected({
        " Volume in drive C has no label.",
        "04-11-18 19:55AM   3961",
        "04-11-18 19:55AM   3961 ",
        "04-11-18 19:55AM   <DIR>",
        "04-11-18 19:55AM   <DIRECTORY> name",
        "04-31-18 19:55AM   3961 name",
        "13-11-18 19:55AM   3961 name",
        "04-11-118 19:55AM   3961 name",
        "04-11 19:55AM   3961 name",
        "04-11/18 19:55AM   3961 name",
        "04-11-18 24:00AM   3961 name",
        "04-11-18 19:55XM   3961 name",
        "04-11-18   3961 name",
    });
}

TEST(ListingParser, ReadsTheFactsOfMlsd) {
    check({
        {"type=file;size=3961;modify=20041118195501; name.xml", "F 3961 2004-11-18 19:55:01 [name.xml]"},
        {"Type=Dir;Modify=20041118195501.123;Perm=el; Event Lists", "D 0 2004-11-18 19:55:01 [Event Lists]"},
        {"modify=19800101000000;type=file;size=0;  two blanks ", "F 0 1980-01-01 00:00:00 [ two blanks ]"},
        {"type=cdir;modify=19800101000000; /ata0a", "D 0 1980-01-01 00:00:00 [.]"},
        {"type=pdir;modify=19800101000000; /", "D 0 1980-01-01 00:00:00 [..]"},
        {"type=OS.unix=slink:/x;size=4; link", "L 4 1970-01-01 00:00:00 [link]"},
        {"type=OS.unix=chr-1/3;size=4; null", "O 4 1970-01-01 00:00:00 [null]"},
        {"size=12; no type", "F 12 1970-01-01 00:00:00 [no type]"},
        {"type=file;modify=20041341195501; bad date", "F 0 1970-01-01 00:00:00 [bad date]"},
        {"type=file;modify=2004; short date", "F 0 1970-01-01 00:00:00 [short date]"},
        {"type=file;size=twelve; bad size", "F 0 1970-01-01 00:00:00 [bad size]"},
        {"type=file;size=1;unix.mode=0644;x.y=a=b; other facts", "F 1 1970-01-01 00:00:00 [other facts]"},
    });
    expectRejected({
        " name without facts",
        "type=file;size=12;name",
        "type=file;size=12 name",
        "type;size=12; name",
        "=file; name",
        "unix.mode=0644; nothing that we know",
        "type=file;",
        "type=file; ",
        ";; name",
    });
}

TEST(ListingParser, SortsMixedLinesOneByOne) {
    check({
        {"220 a banner is no entry", "rejected"},
        {"~~~~ 0xDEADBEEF", "rejected"},
        {"tShell> d 0x1000", "rejected"},
        {"-", "rejected"},
        {"d", "rejected"},
        {"1", "rejected"},
        {"type=file;size=1; x", "F 1 1970-01-01 00:00:00 [x]"},
        {"01-01-01 01:01AM  <DIR>  x", "D 0 2001-01-01 01:01:00 [x]"},
    });
}

/// What a reader gives for a listing that comes in portions of one size.
struct Read {
    std::vector<std::string> names;
    std::vector<std::string> unsafe;
    bool cannotBeOpened = false;
};

Read readInPortions(std::string_view listing, std::size_t portion) {
    Read read;
    ListingReader reader(
        now, [&](const ListingLine& entry) { read.names.emplace_back(entry.name); },
        [&](std::string_view name) { read.unsafe.emplace_back(name); });
    for (std::size_t start = 0; start < listing.size(); start += portion) {
        reader.feed(listing.substr(start, portion));
    }
    reader.finish();
    read.cannotBeOpened = reader.saysFolderCannotBeOpened();
    return read;
}

using Names = std::vector<std::string>;

TEST(ListingReader, GivesTheSameEntriesHoweverTheBytesCome) {
    const std::string listing = "  size          date       time       name\r\n"
                                "--------       ------     ------    --------\n"
                                "       1    Jan-01-1999  00:00:00   one   \r\n"
                                "\r\n"
                                "       2    Jan-01-1999  00:00:00   two\n"
                                "    2048    Jan-01-1999  00:00:00   .                 <DIR>\r\n"
                                "    2048    Jan-01-1999  00:00:00   ..                <DIR>\r\n"
                                "       3    Jan-01-1999  00:00:00   no line end";
    for (std::size_t portion = 1; portion <= listing.size(); ++portion) {
        const Read read = readInPortions(listing, portion);
        EXPECT_EQ(read.names, (Names{"one", "two", "no line end"})) << "portion: " << portion;
        EXPECT_EQ(read.unsafe, Names()) << "portion: " << portion;
    }
}

TEST(ListingReader, ReportsNamesThatAreNotOnePlainFileName) {
    const std::string prefix = "       1    Jan-01-1999  00:00:00   ";
    const Names unsafe = {"..",     ".",           "../x",   "a/b",
                          "a\\b",   "/etc/passwd", "c:\\x",  std::string("nul\0byte", 8),
                          "bell\a", "tab\tin",     "del\x7f"};
    std::string listing;
    for (const std::string& name : unsafe) {
        listing.append(prefix).append(name).append("\r\n");
    }
    listing.append(prefix).append("..hidden..\r\n").append(prefix).append("caf\xe9\r\n");
    const Read read = readInPortions(listing, 7);
    EXPECT_EQ(read.unsafe, unsafe);
    EXPECT_EQ(read.names, (Names{"..hidden..", "caf\xe9"}));
}

TEST(ListingReader, PassesOverLinesThatAreTooLong) {
    const std::string prefix = "       1    Jan-01-1999  00:00:00   ";
    const std::string name(ListingReader::longestLine - prefix.size(), 'x');
    const std::string longest = prefix + name;
    const std::string nextLine = "x\n" + prefix + "next\n";
    for (const std::size_t portion : {std::size_t{1000}, std::size_t{1} << 20}) {
        EXPECT_EQ(readInPortions(longest + "\nx\n", portion).names, Names{name});
        EXPECT_EQ(readInPortions(longest + nextLine, portion).names, Names{"next"});
        EXPECT_EQ(readInPortions(longest + "x", portion).names, Names());
    }
}

TEST(ListingReader, HearsThatAFolderCannotBeOpened) {
    EXPECT_TRUE(readInPortions("Can't open \"/ata0a/none\".\r\n", 5).cannotBeOpened);
    EXPECT_FALSE(readInPortions("total 0\r\n", 5).cannotBeOpened);
    EXPECT_FALSE(readInPortions("", 5).cannotBeOpened);
}

/// Good lines with bytes changed, cut and doubled at random: nothing may crash, and every entry that comes
/// out holds what the rest of the client relies on.
TEST(ListingReader, SurvivesMutatedListings) {
    const std::vector<std::string> seeds = {
        "  307200    Sep-30-2015  11:05:42   K5902-041A.out    ",
        "    2048    OCT-02-2015  08:15:00   webfiles          <DIR>",
        "-rw-r--r--+  1 root     root         3961 Nov 18 19:55 name.xml",
        "crw-rw-rw-   1 root root 1,   3 Jan  1  1980 null",
        "lrwxrwxrwx   1 root root 7 Jan  1  1980 link -> target",
        "-rw-r--r--   1 root root 7 2004-11-18 19:55:01.123456789 +0100 full-iso",
        "04-11-18 19:55AM   3961 name",
        "01-01-2001 01:01PM  <DIR>  folder",
        "type=file;size=3961;modify=20041118195501.5; name.xml",
        "type=cdir;modify=19800101000000; /ata0a",
    };
    using namespace std::string_literals;
    const std::string alphabet = " -:;=.,/\\<>DIR0123456789?JanFebdrwxl\r\n\t\0\x7f\xc3\xe9+@"s;
    std::mt19937 random(20181120); // always the same run
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    std::size_t entries = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string line = seeds[below(seeds.size())];
        for (std::size_t change = below(6) + 1; change > 0 && !line.empty(); --change) {
            const std::size_t at = below(line.size());
            switch (below(3)) {
            case 0:
                line[at] = alphabet[below(alphabet.size())];
                break;
            case 1:
                line.erase(at, below(8) + 1);
                break;
            default:
                line.insert(at, line.substr(below(line.size()), below(12)));
                break;
            }
        }
        const Read read = readInPortions(line + "\n" + seeds[below(seeds.size())], below(20) + 1);
        for (const std::string& name : read.names) {
            EXPECT_FALSE(name.empty());
            EXPECT_EQ(name.find_first_of(std::string_view("/\\\0\r\n", 5)), std::string::npos)
                << "line: " << line;
        }
        if (const auto entry = parseListingLine(line, now)) {
            EXPECT_GE(entry->size, 0) << "line: " << line;
            EXPECT_FALSE(entry->name.empty()) << "line: " << line;
            ++entries;
        }
    }
    EXPECT_GT(entries, 5000U); // otherwise the mutations are too wild to test anything
}

} // namespace
} // namespace quillport::ftp
