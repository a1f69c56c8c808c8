#include "help.h"

#include <algorithm>
#include <array>

namespace quillport {

namespace {

constexpr std::array commandTable{
    CommandInfo{command::info, "info", "info --host NAME --part-number K5901|K5902 --user NAME [OPTIONS]",
                "show what the RTU is and what it holds",
                "Logs in to the RTU and prints its name, part number and configuration, and the names,\n"
                "dates and sizes of its GUI, its application and its operating system.\n"
                "\n"
                "Exit status: 0 when all of it could be read, 1 when a part is missing, 2 for wrong\n"
                "usage, 3 when the login failed."},
    CommandInfo{command::get, "get",
                "get TYPE --to FOLDER --host NAME --part-number K5901|K5902 --user NAME [OPTIONS]",
                "bring files of one type from the RTU to this machine",
                "TYPE is application, os, configuration, gui or templates. The files are laid out below\n"
                "FOLDER in the tree of their type (FOLDER/Application for the application), or in FOLDER\n"
                "itself when its path has that name in it already. FOLDER is made when it is not there.\n"
                "\n"
                "The last line on standard output is the result. Exit status: 0 only when the result is\n"
                "OK, nothing failed on the way and at least one file came whole; 1 otherwise, with the\n"
                "reason on standard error; 2 for wrong usage; 3 when the login failed."},
    CommandInfo{command::send, "send",
                "send TYPE --from PATH --host NAME --part-number K5901|K5902 --user NAME [OPTIONS]",
                "send files of one type from this machine to the RTU",
                "TYPE is application, os, configuration, gui or templates. PATH is the file to send; for\n"
                "configuration and templates it is the folder that holds the files, or a file in it.\n"
                "\n"
                "The last line on standard output is the result. Exit status: 0 only when the result is\n"
                "OK, nothing failed on the way, at least one file went and none is known to stand short\n"
                "on the RTU; 1 otherwise, with the reason on standard error; 2 for wrong usage; 3 when the\n"
                "login failed."},
    CommandInfo{command::session, "session", "session [OPTIONS]",
                "drive the panel from JSON lines, for automation",
                "Reads actions as JSON lines from standard input and writes every effect as a JSON line\n"
                "on standard output: clicks and typing go in, what the panel shows and asks comes out.\n"
                "What --host, --part-number, --user and a password give is put in before the first\n"
                "action; nobody is asked for anything. The protocol is told in docs/session.md.\n"
                "\n"
                "Exit status: 0 at the end of the input, 2 for wrong usage and for a line that is no\n"
                "action."},
};

constexpr std::uint8_t asking = command::info | command::get | command::send;

constexpr std::array optionTable{
    OptionInfo{"--host", "NAME", command::all, "name or address of the RTU"},
    OptionInfo{"--part-number", "K5901|K5902", command::all, "part number of the RTU's CPU board"},
    OptionInfo{"--user", "NAME", command::all, "user name for the login"},
    OptionInfo{"--password-file", "FILE", command::all,
               "file whose first line is the password; without it\n"
               "the environment variable QUILLPORT_PASSWORD\n"
               "counts, else you are asked on the terminal"},
    OptionInfo{"--to", "FOLDER", command::get, "where the files go"},
    OptionInfo{"--from", "PATH", command::send, "file or folder to send"},
    OptionInfo{"--answer", "TITLE=BUTTON", asking,
               "answer to the prompts with this title, or whose\n"
               "text begins so when they have none: Yes, No, OK,\n"
               "Cancel or Retry; may be given again. Other prompts\n"
               "are put to you on a terminal, and elsewhere get\n"
               "their default button"},
    OptionInfo{"--json", "", command::info, "print one JSON object and no table"},
    OptionInfo{"--trace", "", command::session, "write the FTP client's calls and events as well"},
    OptionInfo{"--connect-to", "HOST:PORT:HOST:PORT", command::all,
               "connect to the second HOST:PORT wherever the first\n"
               "is meant (port 21 for FTP, 80 for the web); may be\n"
               "given again"},
    OptionInfo{"--connect-timeout", "SECONDS", command::all, "longest wait for a connection (30)"},
    OptionInfo{"--silence-timeout", "SECONDS", command::all, "longest silence of the RTU (60)"},
    OptionInfo{"--help", "", command::all, "show this help; behind a command, its own"},
    OptionInfo{"--version", "", command::all, "show the version"},
};

std::string indented(std::string_view text, std::size_t by) {
    std::string result;
    for (const char character : text) {
        result += character;
        if (character == '\n') {
            result.append(by, ' ');
        }
    }
    return result;
}

std::string inColumns(const std::string& left, std::string_view right, std::size_t column) {
    std::string line = "  " + left;
    if (line.size() + 2 > column) {
        line += "\n" + std::string(column, ' ');
    } else {
        line.resize(column, ' ');
    }
    return line + indented(right, column) + "\n";
}

std::string optionLines(std::uint8_t of) {
    constexpr std::size_t textColumn = 30;
    std::string lines;
    for (const OptionInfo& option : optionTable) {
        if ((option.commands & of) != 0) {
            const std::string value = option.value.empty() ? "" : " " + std::string(option.value);
            lines += inColumns(std::string(option.name) + value, option.text, textColumn);
        }
    }
    return lines;
}

std::string commandLines() {
    std::string lines;
    for (const CommandInfo& info : commandTable) {
        lines += inColumns(std::string(info.word), info.summary, 12);
    }
    return lines;
}

} // namespace

std::span<const CommandInfo> commands() {
    return commandTable;
}

std::span<const OptionInfo> optionInfos() {
    return optionTable;
}

std::string helpFor(const CommandInfo* chosen) {
    if (chosen != nullptr) {
        return "usage: quillportctl " + std::string(chosen->usage) + "\n\n" + std::string(chosen->text) +
               "\n\noptions, before or behind the command:\n" + optionLines(chosen->bit);
    }
    return "usage: quillportctl COMMAND [OPTIONS]\n\n"
           "Sees what a remote terminal unit (RTU) holds, and moves its application, operating system,\n"
           "configuration, GUI or templates to and from this machine.\n\n"
           "commands:\n" +
           commandLines() + "\noptions, before or behind the command:\n" + optionLines(command::all) +
           "\n\"quillportctl COMMAND --help\" tells more about a command.\n\n"
           "example:\n"
           "  quillportctl get application --to ~/backup --host rtu12 --part-number K5902 --user rtu\n";
}

} // namespace quillport
