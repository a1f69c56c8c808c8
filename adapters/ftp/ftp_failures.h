#pragma once

#include "platform/failure.h"
#include "transfer/FtpClient.h"

#include <curl/curl.h>

#include <cstdint>
#include <string>
#include <string_view>

/// Numbers of the FTP client's failures: one table from 0x80042000 up, with a text each in ftp_failures.cpp.
/// The two numbers that the control knows by value are declared with the interface, in FtpClient.h.
namespace quillport::ftp_failure {

inline constexpr auto internalError = static_cast<std::int32_t>(0x80042000U);
inline constexpr auto notConnected = static_cast<std::int32_t>(0x80042001U);
inline constexpr auto busy = static_cast<std::int32_t>(0x80042002U);
inline constexpr auto hostUnknown = static_cast<std::int32_t>(0x80042003U);
inline constexpr auto connectionRefused = static_cast<std::int32_t>(0x80042004U);
inline constexpr auto connectTimedOut = static_cast<std::int32_t>(0x80042005U);
inline constexpr auto loginRefused = static_cast<std::int32_t>(0x80042006U);
inline constexpr auto tooManyLogins = static_cast<std::int32_t>(0x80042007U);
inline constexpr auto linkLost = static_cast<std::int32_t>(0x80042008U);
inline constexpr auto silent = static_cast<std::int32_t>(0x80042009U);
inline constexpr auto aborted = static_cast<std::int32_t>(0x8004200AU);
inline constexpr auto dataConnectionFailed = static_cast<std::int32_t>(0x8004200BU);
inline constexpr auto transferEndedByServer = static_cast<std::int32_t>(0x8004200CU);
inline constexpr auto localFileNotReadable = static_cast<std::int32_t>(0x8004200EU);
inline constexpr auto localFileNotWritable = static_cast<std::int32_t>(0x8004200FU);
inline constexpr auto localDiskFull = static_cast<std::int32_t>(0x80042010U);
inline constexpr auto localFileChanged = static_cast<std::int32_t>(0x80042011U);
inline constexpr auto tooLarge = static_cast<std::int32_t>(0x80042012U);
inline constexpr auto accessRefused = static_cast<std::int32_t>(0x80042014U);
inline constexpr auto serverStorageFull = static_cast<std::int32_t>(0x80042015U);
inline constexpr auto nameRefused = static_cast<std::int32_t>(0x80042016U);
inline constexpr auto commandRefused = static_cast<std::int32_t>(0x80042017U);
inline constexpr auto badArgument = static_cast<std::int32_t>(0x80042018U);
inline constexpr auto unsafeName = static_cast<std::int32_t>(0x80042019U);
inline constexpr auto notAPlainFile = static_cast<std::int32_t>(0x8004201AU);
inline constexpr auto namesCollide = static_cast<std::int32_t>(0x8004201BU);
inline constexpr auto treeTooLarge = static_cast<std::int32_t>(0x8004201CU);

} // namespace quillport::ftp_failure

namespace quillport::ftp {

/// The table's text for a number; a text for every other number too, also 0. Never raises.
[[nodiscard]] std::string failureText(std::int32_t number);

/// A failure with the table's text and, in brackets behind it, what it is about or the server's own words.
[[nodiscard]] Failure failure(std::int32_t number, std::string_view detail = {});

/// What a command was meant to do; the same reply code means different things to different commands.
enum class Purpose { login, find, change, fetch, store };

/// The number that a reply code means when it is not the one that was hoped for. The words decide where a
/// server gives one code for different causes: 550 is "not there" as well as "not allowed".
[[nodiscard]] std::int32_t numberForReply(int code, std::string_view words, Purpose purpose);

/// Whether the words of a refusal say why. Where they do not, only a look at the folder can tell.
[[nodiscard]] bool wordsTellCause(std::string_view words);

/// The number that an outcome of libcurl means while a connection to the server is made.
[[nodiscard]] std::int32_t numberForConnect(CURLcode code);

} // namespace quillport::ftp
