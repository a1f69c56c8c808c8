#include "ftp/listing_parser.h"

#include "ftp/remote_paths.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace quillport::ftp {

namespace {

constexpr std::string_view folderMark = "<DIR>";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsFolded(std::string_view text, std::string_view lowered) {
    return text.size() == lowered.size() &&
           std::equal(text.begin(), text.end(), lowered.begin(),
                      [](char ours, char theirs) { return lowerAscii(ours) == theirs; });
}

bool isNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Cuts the next run of characters other than blanks off the front; empty at the end.
std::string_view cutToken(std::string_view& rest) {
    const auto first = std::min(rest.find_first_not_of(' '), rest.size());
    const auto end = std::min(rest.find(' ', first), rest.size());
    const std::string_view token = rest.substr(first, end - first);
    rest.remove_prefix(end);
    return token;
}

/// A whole number of a given count of digits.
std::optional<int> digits(std::string_view text, std::size_t least, std::size_t most) {
    if (text.size() < least || text.size() > most || !isNumber(text)) {
        return std::nullopt;
    }
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// A size; one that 64 bits cannot hold becomes the largest.
std::optional<std::int64_t> sizeOf(std::string_view text) {
    if (!isNumber(text)) {
        return std::nullopt;
    }
    std::int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : std::numeric_limits<std::int64_t>::max();
}

std::optional<unsigned> monthOf(std::string_view text) {
    constexpr std::string_view names = "janfebmaraprmayjunjulaugsepoctnovdec";
    if (text.size() != 3) {
        return std::nullopt;
    }
    for (std::size_t month = 0; month < 12; ++month) {
        if (equalsFolded(text, names.substr(month * 3, 3))) {
            return static_cast<unsigned>(month + 1);
        }
    }
    return std::nullopt;
}

struct TimeOfDay {
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// H:MM, HH:MM or HH:MM:SS, with a fraction behind it or not.
std::optional<TimeOfDay> timeOf(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const auto hour = digits(text.substr(0, colon), 1, 2);
    const auto minute = digits(text.substr(colon + 1, 2), 2, 2);
    if (!hour || !minute || *hour > 23 || *minute > 59) {
        return std::nullopt;
    }
    TimeOfDay time{*hour, *minute, 0};
    const std::string_view behind = text.substr(std::min(colon + 3, text.size()));
    if (behind.empty()) {
        return time;
    }
    const auto second = digits(behind.substr(1, 2), 2, 2);
    const bool endsWell = behind.size() == 3 || (behind.size() > 4 && behind[3] == '.');
    if (behind.front() != ':' || !second || *second > 60 || !endsWell) {
        return std::nullopt;
    }
    time.second = *second;
    return time;
}

std::optional<DateTime> dateOf(int year, unsigned month, unsigned day, const TimeOfDay& time = {}) {
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    if (!date.ok()) {
        return std::nullopt;
    }
    return DateTime{std::chrono::local_days{date}} + std::chrono::hours{time.hour} +
           std::chrono::minutes{time.minute} + std::chrono::seconds{time.second};
}

/// The last year in which the date has passed; a 29th of February looks back further than one year.
std::optional<DateTime> latestPassed(unsigned month, unsigned day, const TimeOfDay& time, DateTime now) {
    constexpr int longestGapOfLeapYears = 8;
    const std::chrono::year_month_day today{std::chrono::floor<std::chrono::days>(now)};
    const int thisYear = static_cast<int>(today.year());
    for (int year = thisYear; year >= thisYear - longestGapOfLeapYears; --year) {
        const auto date = dateOf(year, month, day, time);
        if (date && *date <= now) {
            return date;
        }
    }
    return std::nullopt;
}

/// Removes the mark of a folder, with the blanks before it, from the end of the text.
bool cutFolderMark(std::string_view& text) {
    if (!text.ends_with(folderMark)) {
        return false;
    }
    const std::string_view before = text.substr(0, text.size() - folderMark.size());
    if (!before.ends_with(' ')) {
        return false;
    }
    text = trimmed(before);
    return true;
}

// The table of VxWorks: size, Mon-DD-YYYY, HH:MM:SS, name, and <DIR> at the end of a folder's line.

/// A size of the table, which counts in 32 bits: one above 2^31-1 is printed as a negative number.
std::optional<std::int64_t> tableSizeOf(std::string_view text) {
    const bool wrapped = text.starts_with('-');
    const auto size = sizeOf(wrapped ? text.substr(1) : text);
    if (!size || !wrapped) {
        return size;
    }
    constexpr std::int64_t range = std::int64_t{1} << 32;
    return *size <= range / 2 ? std::optional(range - *size) : std::nullopt;
}

/// The date of the table. A file system with no clock prints "???" for the month or 00 for the day.
std::optional<DateTime> tableDateOf(std::string_view text, std::string_view clock) {
    if (text.size() != 11 || text[3] != '-' || text[6] != '-') {
        return std::nullopt;
    }
    const auto month = monthOf(text.substr(0, 3));
    const auto day = digits(text.substr(4, 2), 2, 2);
    const auto year = digits(text.substr(7), 4, 4);
    const auto time = timeOf(clock);
    if (!day || !year || !time || (!month && text.substr(0, 3) != "???")) {
        return std::nullopt;
    }
    if (!month || *day == 0) {
        return DateTime{};
    }
    return dateOf(*year, *month, static_cast<unsigned>(*day), *time);
}

std::optional<ListingLine> parseTableLine(std::string_view rest) {
    const auto size = tableSizeOf(cutToken(rest));
    if (!size) {
        return std::nullopt;
    }
    const std::string_view day = cutToken(rest);
    const std::string_view clock = cutToken(rest);
    const auto date = tableDateOf(day, clock);
    if (!date) {
        return std::nullopt;
    }
    ListingLine entry;
    entry.size = *size;
    entry.date = *date;
    entry.name = trimmed(rest);
    if (cutFolderMark(entry.name)) {
        entry.kind = EntryKind::folder;
    }
    return entry.name.empty() || entry.name == folderMark ? std::nullopt : std::optional(entry);
}

// DOS-like servers: MM-DD-YY or MM-DD-YYYY, HH:MM with AM, PM or nothing, size or <DIR>, name.

std::optional<int> dosYearOf(std::string_view text) {
    const auto year = digits(text, 2, 4);
    if (!year || text.size() == 3) {
        return std::nullopt;
    }
    if (text.size() == 4) {
        return year;
    }
    return *year < 70 ? *year + 2000 : *year + 1900;
}

/// RTUs print a clock of 24 hours and an AM that means nothing; others a clock of 12 hours that means it. An
/// hour that a clock of 12 hours does not have tells them apart.
std::optional<TimeOfDay> dosTimeOf(std::string_view text) {
    const bool isAm = text.size() > 2 && equalsFolded(text.substr(text.size() - 2), "am");
    const bool isPm = text.size() > 2 && equalsFolded(text.substr(text.size() - 2), "pm");
    auto time = timeOf(isAm || isPm ? text.substr(0, text.size() - 2) : text);
    if (time && isPm && time->hour >= 1 && time->hour <= 11) {
        time->hour += 12;
    } else if (time && isAm && time->hour == 12) {
        time->hour = 0;
    }
    return time;
}

std::optional<DateTime> dosDateOf(std::string_view text, std::string_view clock) {
    if (text.size() < 8 || text[2] != text[5] || (text[2] != '-' && text[2] != '/')) {
        return std::nullopt;
    }
    const auto month = digits(text.substr(0, 2), 2, 2);
    const auto day = digits(text.substr(3, 2), 2, 2);
    const auto year = dosYearOf(text.substr(6));
    const auto time = dosTimeOf(clock);
    if (!month || !day || !year || !time) {
        return std::nullopt;
    }
    return dateOf(*year, static_cast<unsigned>(*month), static_cast<unsigned>(*day), *time);
}

std::optional<ListingLine> parseDosLine(std::string_view rest) {
    const std::string_view day = cutToken(rest);
    const std::string_view clock = cutToken(rest);
    const auto date = dosDateOf(day, clock);
    if (!date) {
        return std::nullopt;
    }
    ListingLine entry;
    entry.date = *date;
    const std::string_view sizeOrMark = cutToken(rest);
    if (sizeOrMark == folderMark) {
        entry.kind = EntryKind::folder;
    } else if (const auto size = sizeOf(sizeOrMark)) {
        entry.size = *size;
    } else {
        return std::nullopt;
    }
    entry.name = trimmed(rest);
    return entry.name.empty() ? std::nullopt : std::optional(entry);
}

// "ls -l": mode, then owner and the like in varying number, size, date, name.

std::optional<EntryKind> kindOfMode(char c) {
    switch (c) {
    case '-':
        return EntryKind::file;
    case 'd':
        return EntryKind::folder;
    case 'l':
        return EntryKind::link;
    case 'b':
    case 'c':
    case 'p':
    case 's':
        return EntryKind::other;
    default:
        return std::nullopt;
    }
}

/// Ten characters of a mode, perhaps with the mark of an access list, a context or extended attributes.
bool isMode(std::string_view text) {
    constexpr std::size_t bare = 10;
    const bool marked =
        text.size() == bare + 1 && std::string_view("+@.").find(text.back()) != std::string_view::npos;
    return (text.size() == bare || marked) &&
           text.substr(1, bare - 1).find_first_not_of("rwxsStTlL-") == std::string_view::npos;
}

/// A month and a day in either order, then a year or a time of a year that is left out.
std::optional<DateTime> unixDateOf(std::string_view first, std::string_view second, std::string_view third,
                                   DateTime now) {
    auto month = monthOf(first);
    auto day = digits(second, 1, 2);
    if (!month) {
        month = monthOf(second);
        day = digits(first, 1, 2);
    }
    if (!month || !day) {
        return std::nullopt;
    }
    if (const auto year = digits(third, 4, 4)) {
        return dateOf(*year, *month, static_cast<unsigned>(*day));
    }
    if (const auto time = timeOf(third)) {
        return latestPassed(*month, static_cast<unsigned>(*day), *time, now);
    }
    return std::nullopt;
}

/// YYYY-MM-DD and a time.
std::optional<DateTime> isoDateOf(std::string_view text, std::string_view clock) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    const auto year = digits(text.substr(0, 4), 4, 4);
    const auto month = digits(text.substr(5, 2), 2, 2);
    const auto day = digits(text.substr(8, 2), 2, 2);
    const auto time = timeOf(clock);
    if (!year || !month || !day || !time) {
        return std::nullopt;
    }
    return dateOf(*year, static_cast<unsigned>(*month), static_cast<unsigned>(*day), *time);
}

/// Cuts a date off the front of the text, if one stands there.
std::optional<DateTime> cutUnixDate(std::string_view& text, DateTime now) {
    std::string_view rest = text;
    const std::string_view first = cutToken(rest);
    const std::string_view second = cutToken(rest);
    auto date = isoDateOf(first, second);
    if (date) {
        std::string_view behindZone = rest;
        const std::string_view zone = cutToken(behindZone);
        if (zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') && isNumber(zone.substr(1))) {
            rest = behindZone;
        }
    } else {
        date = unixDateOf(first, second, cutToken(rest), now);
    }
    if (date) {
        text = rest;
    }
    return date;
}

/// Before the date stands the size, or the two numbers of a device.
bool mayStandBeforeDate(std::string_view token, EntryKind kind) {
    return isNumber(token) || (kind == EntryKind::other && !token.empty() && isDigit(token.front()) &&
                               token.find_first_not_of("0123456789,") == std::string_view::npos);
}

void splitLink(ListingLine& entry) {
    constexpr std::string_view arrow = " -> ";
    const auto position = entry.name.find(arrow);
    if (position != std::string_view::npos) {
        entry.linkTarget = trimmed(entry.name.substr(position + arrow.size()));
        entry.name = trimmed(entry.name.substr(0, position));
    } else if (entry.name.starts_with(trimmed(arrow))) {
        entry.name = {}; // a target without a name
    }
}

std::optional<ListingLine> parseUnixLine(std::string_view rest, DateTime now) {
    const std::string_view mode = cutToken(rest);
    const auto kind = mode.empty() ? std::nullopt : kindOfMode(mode.front());
    if (!kind || !isMode(mode)) {
        return std::nullopt;
    }
    for (std::string_view token = cutToken(rest); !token.empty(); token = cutToken(rest)) {
        const auto date = mayStandBeforeDate(token, *kind) ? cutUnixDate(rest, now) : std::nullopt;
        if (!date) {
            continue;
        }
        ListingLine entry;
        entry.kind = *kind;
        entry.date = *date;
        entry.size = *kind == EntryKind::other ? 0 : sizeOf(token).value_or(0);
        entry.name = trimmed(rest);
        if (*kind == EntryKind::link) {
            splitLink(entry);
        }
        return entry.name.empty() ? std::nullopt : std::optional(entry);
    }
    return std::nullopt;
}

// MLSD: facts "name=value;", a blank, the name.

EntryKind kindOfFact(std::string_view value) {
    if (equalsFolded(value, "file")) {
        return EntryKind::file;
    }
    if (equalsFolded(value, "dir") || equalsFolded(value, "cdir") || equalsFolded(value, "pdir")) {
        return EntryKind::folder;
    }
    constexpr std::string_view linkTypes[] = {"os.unix=slink", "os.unix=symlink"};
    const std::string_view type = value.substr(0, value.find(':'));
    const bool isLink = std::any_of(std::begin(linkTypes), std::end(linkTypes),
                                    [&](std::string_view known) { return equalsFolded(type, known); });
    return isLink ? EntryKind::link : EntryKind::other;
}

/// YYYYMMDDHHMMSS, with a fraction or not.
std::optional<DateTime> factDateOf(std::string_view text) {
    const auto year = digits(text.substr(0, 4), 4, 4);
    if (text.size() < 14 || !isNumber(text.substr(0, 14)) || !year) {
        return std::nullopt;
    }
    const auto two = [&](std::size_t at) { return *digits(text.substr(at, 2), 2, 2); };
    const TimeOfDay time{two(8), two(10), two(12)};
    if (time.hour > 23 || time.minute > 59 || time.second > 60) {
        return std::nullopt;
    }
    return dateOf(*year, static_cast<unsigned>(two(4)), static_cast<unsigned>(two(6)), time);
}

/// Takes one "name=value"; false when it is no fact at all.
bool takeFact(std::string_view fact, ListingLine& entry, bool& knownFact) {
    const auto sign = fact.find('=');
    if (sign == std::string_view::npos || sign == 0) {
        return false;
    }
    const std::string_view name = fact.substr(0, sign);
    const std::string_view value = fact.substr(sign + 1);
    if (equalsFolded(name, "type")) {
        entry.kind = kindOfFact(value);
        if (equalsFolded(value, "cdir")) {
            entry.name = ".";
        } else if (equalsFolded(value, "pdir")) {
            entry.name = "..";
        }
        knownFact = true;
    } else if (equalsFolded(name, "size")) {
        entry.size = sizeOf(value).value_or(0);
        knownFact = true;
    } else if (equalsFolded(name, "modify")) {
        entry.date = factDateOf(value).value_or(DateTime{});
        knownFact = true;
    }
    return true;
}

std::optional<ListingLine> parseFactsLine(std::string_view line) {
    const auto end = line.find(' ');
    if (end == std::string_view::npos || end == 0 || line[end - 1] != ';') {
        return std::nullopt;
    }
    ListingLine entry;
    bool knownFact = false;
    for (std::string_view facts = line.substr(0, end); !facts.empty();) {
        const auto semicolon = facts.find(';');
        if (!takeFact(facts.substr(0, semicolon), entry, knownFact)) {
            return std::nullopt;
        }
        facts.remove_prefix(semicolon + 1);
    }
    if (entry.name.empty()) {
        entry.name = line.substr(end + 1); // as it stands: here the format leaves no doubt about blanks
    }
    return knownFact && !entry.name.empty() ? std::optional(entry) : std::nullopt;
}

bool isOwnFolder(const ListingLine& entry) {
    return entry.kind == EntryKind::folder && (entry.name == "." || entry.name == "..");
}

} // namespace

std::optional<ListingLine> parseListingLine(std::string_view line, DateTime now) {
    const auto first = line.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return std::nullopt;
    }
    if (auto entry = parseUnixLine(line, now)) {
        return entry;
    }
    if (isDigit(line[first]) || line[first] == '-') {
        auto entry = parseTableLine(line);
        return entry ? entry : parseDosLine(line);
    }
    return parseFactsLine(line);
}

ListingReader::ListingReader(DateTime now, EntryReceiver onEntry, UnsafeNameReceiver onUnsafeName)
    : now_(now), onEntry_(std::move(onEntry)), onUnsafeName_(std::move(onUnsafeName)) {}

void ListingReader::feed(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto end = bytes.find('\n');
        const std::string_view piece = bytes.substr(0, end);
        if (end == std::string_view::npos) {
            skipsLine_ = skipsLine_ || begun_.size() + piece.size() > longestLine;
            begun_.append(skipsLine_ ? std::string_view() : piece);
            return;
        }
        if (!skipsLine_ && begun_.empty()) {
            takeLine(piece);
        } else if (!skipsLine_) {
            begun_.append(piece.substr(0, longestLine + 1));
            takeLine(begun_);
        }
        begun_.clear();
        skipsLine_ = false;
        bytes.remove_prefix(end + 1);
    }
}

void ListingReader::finish() {
    if (!skipsLine_) {
        takeLine(begun_);
    }
    begun_.clear();
    skipsLine_ = false;
}

void ListingReader::takeLine(std::string_view line) {
    while (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    if (line.size() > longestLine) {
        return;
    }
    const auto entry = parseListingLine(line, now_);
    if (!entry) {
        saysFolderCannotBeOpened_ = saysFolderCannotBeOpened_ || line.starts_with("Can't open \"");
    } else if (isPlainName(entry->name)) {
        onEntry_(*entry);
    } else if (!isOwnFolder(*entry)) {
        onUnsafeName_(entry->name);
    }
}

} // namespace quillport::ftp
