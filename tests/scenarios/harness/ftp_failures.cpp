#include "harness/ftp_failures.h"

#include "harness/words.h"
#include "transfer/FtpClient.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quillport::scenarios {

namespace {

struct Row {
    FtpTrouble trouble;
    std::int32_t number;
    std::string_view text;
};

constexpr std::int32_t code(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}

// Numbers and texts are the real client's.
constexpr std::array<Row, 13> table{{
    {FtpTrouble::notConnected, code(0x80042001U), "Not connected to an FTP server"},
    {FtpTrouble::busy, code(0x80042002U), "The FTP client is busy with another call"},
    {FtpTrouble::unreachable, code(0x80042004U), "The FTP server cannot be reached or refuses connections"},
    {FtpTrouble::linkLost, code(0x80042008U), "The connection to the FTP server was lost"},
    {FtpTrouble::aborted, code(0x8004200AU), "The transfer was aborted"},
    {FtpTrouble::unexpectedAnswer, ftp_failure::unexpectedAnswer, "The FTP server's answer was not expected"},
    {FtpTrouble::localFileNotReadable, code(0x8004200EU), "The local file or folder cannot be read"},
    {FtpTrouble::localFileNotWritable, code(0x8004200FU), "The local file or folder cannot be written"},
    {FtpTrouble::tooLarge, code(0x80042012U),
     "The file is too large: at most 2147483647 bytes can be transferred"},
    {FtpTrouble::noSuchName, ftp_failure::noSuchRemoteName,
     "There is no such file or folder on the FTP server"},
    {FtpTrouble::accessRefused, code(0x80042014U), "The FTP server refused access"},
    {FtpTrouble::badArgument, code(0x80042018U), "A name or value given to the FTP client cannot be used"},
    {FtpTrouble::notAPlainFile, code(0x8004201AU), "It is not a plain file"},
}};

} // namespace

std::int32_t numberOf(FtpTrouble trouble) {
    return std::find_if(table.begin(), table.end(), [&](const Row& row) { return row.trouble == trouble; })
        ->number;
}

Failure failureOf(FtpTrouble trouble) {
    return {numberOf(trouble), textOfFtpNumber(numberOf(trouble))};
}

std::string textOfFtpNumber(std::int32_t number) {
    const auto* row = std::find_if(table.begin(), table.end(),
                                   [&](const Row& candidate) { return candidate.number == number; });
    if (number == 0) {
        return "No error";
    }
    return row == table.end() ? "Unknown FTP client error " + numberText(number) : std::string(row->text);
}

} // namespace quillport::scenarios
