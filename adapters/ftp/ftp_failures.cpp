#include "ftp/ftp_failures.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace quillport::ftp {

namespace {

struct TableRow {
    std::int32_t number;
    std::string_view text;
};

constexpr TableRow table[] = {
    {ftp_failure::internalError, "The FTP client could not carry out the call"},
    {ftp_failure::notConnected, "Not connected to an FTP server"},
    {ftp_failure::busy, "The FTP client is busy with another call"},
    {ftp_failure::hostUnknown, "The host name of the FTP server is unknown"},
    {ftp_failure::connectionRefused, "The FTP server cannot be reached or refuses connections"},
    {ftp_failure::connectTimedOut, "The FTP server did not answer the attempt to connect in time"},
    {ftp_failure::loginRefused, "The FTP server refused the user name or the password"},
    {ftp_failure::tooManyLogins, "The FTP server takes no further logins at the moment"},
    {ftp_failure::linkLost, "The connection to the FTP server was lost"},
    {ftp_failure::silent, "The FTP server fell silent"},
    {ftp_failure::aborted, "The transfer was aborted"},
    {ftp_failure::dataConnectionFailed, "The connection for the data could not be made"},
    {ftp_failure::transferEndedByServer, "The FTP server ended the transfer before it was complete"},
    {ftp_failure::unexpectedAnswer, "The FTP server's answer was not expected"},
    {ftp_failure::localFileNotReadable, "The local file or folder cannot be read"},
    {ftp_failure::localFileNotWritable, "The local file or folder cannot be written"},
    {ftp_failure::localDiskFull, "The local disk is full"},
    {ftp_failure::localFileChanged, "The local file changed or went away while it was sent"},
    {ftp_failure::tooLarge, "The file is too large: at most 2147483647 bytes can be transferred"},
    {ftp_failure::noSuchRemoteName, "There is no such file or folder on the FTP server"},
    {ftp_failure::accessRefused, "The FTP server refused access"},
    {ftp_failure::serverStorageFull, "The FTP server has no room left"},
    {ftp_failure::nameRefused, "The FTP server does not accept the name"},
    {ftp_failure::commandRefused, "The FTP server does not carry out the command"},
    {ftp_failure::badArgument, "A name or value given to the FTP client cannot be used"},
    {ftp_failure::unsafeName, "The name is not one plain file name"},
    {ftp_failure::notAPlainFile, "It is not a plain file"},
    {ftp_failure::namesCollide, "Two names in one folder differ only in case"},
    {ftp_failure::treeTooLarge, "The folders are nested too deeply or hold too many entries"},
};

/// Whether the words hold one of the phrases, in any case.
template <std::size_t count>
bool speakOf(std::string_view words, const std::array<std::string_view, count>& phrases) {
    const std::string lowered = text::lower(words);
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](std::string_view phrase) { return lowered.find(phrase) != std::string::npos; });
}

constexpr std::array<std::string_view, 11> refusalPhrases = {
    "permission", "denied", "not permitted", "not allowed", "forbidden", "read-only",
    "read only",  "in use", "busy",          "exists",      "not empty"};
constexpr std::array<std::string_view, 8> absencePhrases = {"no such",      "not found",   "not exist",
                                                            "non existent", "nonexistent", "non-existent",
                                                            "cannot find",  "can't find"};

/// A 550 without telling words most likely means that what was asked for is not there, and a refusal where
/// nothing was asked for that could be missing.
std::int32_t numberForUnavailable(std::string_view words, Purpose purpose) {
    if (purpose == Purpose::login) {
        return ftp_failure::loginRefused;
    }
    if (speakOf(words, absencePhrases)) {
        return ftp_failure::noSuchRemoteName;
    }
    const bool asksForSomething = purpose == Purpose::find || purpose == Purpose::fetch;
    return asksForSomething && !speakOf(words, refusalPhrases) ? ftp_failure::noSuchRemoteName
                                                               : ftp_failure::accessRefused;
}

} // namespace

std::string failureText(std::int32_t number) {
    const auto* const row = std::find_if(std::begin(table), std::end(table), [&](const TableRow& candidate) {
        return candidate.number == number;
    });
    if (row != std::end(table)) {
        return std::string(row->text);
    }
    if (number == 0) {
        return "No error";
    }
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), "0x%08X", static_cast<unsigned>(number));
    return std::string("Unknown FTP client error ") + digits.data();
}

Failure failure(std::int32_t number, std::string_view detail) {
    std::string description = failureText(number);
    if (!detail.empty()) {
        description.append(" (").append(detail).append(")");
    }
    return {number, description};
}

std::int32_t numberForReply(int code, std::string_view words, Purpose purpose) {
    switch (code) {
    case 421:
        return purpose == Purpose::login ? ftp_failure::tooManyLogins : ftp_failure::linkLost;
    case 425:
        return ftp_failure::dataConnectionFailed;
    case 426:
    case 451:
        return purpose == Purpose::fetch || purpose == Purpose::store ? ftp_failure::transferEndedByServer
                                                                      : ftp_failure::commandRefused;
    case 452:
    case 552:
        return ftp_failure::serverStorageFull;
    case 450:
    case 550:
        return numberForUnavailable(words, purpose);
    case 530:
    case 430:
    case 331:
    case 332:
    case 532:
        return ftp_failure::loginRefused;
    case 553:
        return speakOf(words, refusalPhrases) ? ftp_failure::accessRefused : ftp_failure::nameRefused;
    default:
        break;
    }
    const bool isRefusal = code >= 400 && code <= 599;
    return isRefusal ? ftp_failure::commandRefused : ftp_failure::unexpectedAnswer;
}

bool wordsTellCause(std::string_view words) {
    return speakOf(words, refusalPhrases) || speakOf(words, absencePhrases);
}

std::int32_t numberForConnect(CURLcode code) {
    switch (code) {
    case CURLE_URL_MALFORMAT:
        return ftp_failure::badArgument;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return ftp_failure::hostUnknown;
    case CURLE_OPERATION_TIMEDOUT:
        return ftp_failure::connectTimedOut;
    case CURLE_COULDNT_CONNECT:
        return ftp_failure::connectionRefused;
    default:
        return ftp_failure::internalError;
    }
}

} // namespace quillport::ftp
