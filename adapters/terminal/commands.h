#pragma once

#include "terminal/PromptAnswers.h"
#include "terminal/TransferPicker.h"
#include "terminal/exit_status.h"
#include "transfer/FtpClient.h"

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace quillport {

class Console;
class FileSystem;
class Host;
class XmlPlatform;

/// The real parts of this machine that a command works with. All but the client outlive it.
struct Machine {
    Host& host;
    FileSystem& files;
    XmlPlatform& xml;
    std::unique_ptr<FtpClient> ftp;
};

/// Which RTU, and who logs in.
struct Login {
    std::string host;
    std::string partNumber;
    std::string userName;
    std::string password;
};

/// Throws UsageError when the panel's boxes would cut the name or the password short.
void checkLengths(const Login& login);

enum class InformationForm { table, json };

/// Logs in and writes the RTU Information frame on the output. Not done when a part of it could not be had.
[[nodiscard]] ExitStatus runInfo(Machine machine, Console& console, PromptAnswers answers, const Login& login,
                                 InformationForm form, std::ostream& output);

enum class TransferCommand { get, send };

struct TransferOrder {
    TransferCommand command;
    const FileType& type;
    PickerAnswer place;
};

/// Logs in, moves the files, and writes the control's result text as the output's last line.
[[nodiscard]] ExitStatus runTransfer(Machine machine, Console& console, PromptAnswers answers,
                                     const Login& login, const TransferOrder& order, std::ostream& output);

} // namespace quillport
