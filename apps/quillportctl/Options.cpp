#include "Options.h"

#include "help.h"
#include "terminal/UsageError.h"
#include "terminal/spelling.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string_view>

namespace quillport {

namespace {

using Words = std::vector<std::string_view>;

Words commandWords() {
    Words words;
    for (const CommandInfo& info : commands()) {
        words.push_back(info.word);
    }
    return words;
}

Words optionNames() {
    Words names;
    for (const OptionInfo& info : optionInfos()) {
        names.push_back(info.name);
    }
    return names;
}

[[noreturn]] void refuse(const CommandInfo* chosen, const std::string& why) {
    const std::string word = chosen == nullptr ? "" : std::string(chosen->word) + " ";
    throw UsageError(why + "\nTry \"quillportctl " + word + "--help\".");
}

/// The command line's shape: which words and options there are, and where their values go.
class Parser {
public:
    explicit Parser(Options& options) : options_(options) {
        // Help, required options and words that nobody knows are this program's own business: the texts are
        // better.
        app_.set_help_flag();
        app_.allow_extras();
        app_.require_subcommand(0, 1);
        addOptions();
        for (const CommandInfo& info : commands()) {
            CLI::App* sub = app_.add_subcommand(std::string(info.word))->fallthrough();
            sub->set_help_flag();
            if ((info.bit & (command::get | command::send)) != 0) {
                sub->add_option("TYPE", options_.type);
            }
        }
    }

    void parse(int argc, const char* const* argv) {
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            refuse(nullptr, error.what());
        }
    }

    [[nodiscard]] const CommandInfo* chosen() const {
        const auto subcommands = app_.get_subcommands();
        if (subcommands.empty()) {
            return nullptr;
        }
        const auto all = commands();
        return &*std::find_if(all.begin(), all.end(), [&](const CommandInfo& info) {
            return info.word == subcommands.front()->get_name();
        });
    }

    [[nodiscard]] bool has(std::string_view option) const { return app_.count(std::string(option)) > 0; }

    void refuseUnknownWords() const {
        const std::vector<std::string> unknown = app_.remaining(true);
        if (unknown.empty()) {
            return;
        }
        const std::string& word = unknown.front();
        if (word.starts_with("-")) {
            refuse(chosen(), "unknown option " + word + spelling::hint(word, optionNames()));
        }
        if (chosen() == nullptr) {
            refuse(nullptr, "unknown command \"" + word + "\"" + spelling::hint(word, commandWords()));
        }
        refuse(chosen(), "\"" + word + "\" is one word too many");
    }

    void refuseForeignOptions(const CommandInfo& info) const {
        for (const OptionInfo& option : optionInfos()) {
            if (has(option.name) && (option.commands & info.bit) == 0) {
                refuse(&info, std::string(option.name) + " does not go with " + std::string(info.word));
            }
        }
    }

    void require(const CommandInfo& info, const std::string& option) const {
        if (!has(option)) {
            refuse(&info, option + " is missing");
        }
    }

private:
    void addOptions() {
        addText("--host", options_.host);
        addText("--part-number", options_.partNumber);
        addText("--user", options_.userName);
        addText("--password-file", options_.passwordFile);
        app_.add_option("--to", options_.place);
        app_.add_option("--from", options_.place);
        app_.add_option("--answer", options_.answers)->allow_extra_args(false);
        app_.add_flag("--json", options_.json);
        app_.add_flag("--trace", options_.trace);
        app_.add_option("--connect-to", options_.connectTo)->allow_extra_args(false);
        constexpr int longestSeconds = 24 * 60 * 60;
        app_.add_option("--connect-timeout", options_.connectTimeoutSeconds)
            ->check(CLI::Range(1, longestSeconds));
        app_.add_option("--silence-timeout", options_.silenceTimeoutSeconds)
            ->check(CLI::Range(1, longestSeconds));
        app_.add_flag("--help,-h");
        app_.add_flag("--version");
    }

    /// An option whose empty value is a value.
    void addText(const char* name, std::optional<std::string>& text) {
        app_.add_option_function<std::string>(name, [&text](const std::string& value) { text = value; });
    }

    Options& options_;
    CLI::App app_;
};

void checkPartNumber(const Options& options, const CommandInfo& info) {
    const Words boards{"K5901", "K5902"};
    const std::string& given = options.partNumber.value_or("");
    if (std::find(boards.begin(), boards.end(), given) == boards.end()) {
        refuse(&info, "unknown part number \"" + given + "\"" + spelling::hint(given, boards) +
                          "; the boards are K5901 and K5902");
    }
}

/// HOST:PORT:HOST:PORT, each of them possibly empty, a host in brackets when it has colons of its own.
bool isConnectTo(const std::string& text) {
    int part = 0;
    bool inBrackets = false;
    std::string digits[4];
    for (const char character : text) {
        inBrackets = character == '[' || (inBrackets && character != ']');
        if (character == ':' && !inBrackets) {
            ++part;
        } else if (part < 4) {
            digits[part] += character;
        }
    }
    const auto isPort = [](const std::string& port) {
        return port.find_first_not_of("0123456789") == std::string::npos && port.size() <= 5;
    };
    return part == 3 && !inBrackets && isPort(digits[1]) && isPort(digits[3]);
}

void checkConnections(const Options& options, const CommandInfo& info) {
    for (const std::string& redirection : options.connectTo) {
        if (!isConnectTo(redirection)) {
            refuse(&info, "--connect-to is not HOST:PORT:HOST:PORT: " + redirection);
        }
    }
}

Order orderOf(const CommandInfo& info) {
    switch (info.bit) {
    case command::info:
        return Order::info;
    case command::get:
        return Order::get;
    case command::send:
        return Order::send;
    default:
        return Order::session;
    }
}

void requireWhatItTakes(const Parser& parser, const Options& options, const CommandInfo& info) {
    if (options.order == Order::session) {
        return;
    }
    if (options.order != Order::info && options.type.empty()) {
        refuse(&info, "TYPE is missing: application, os, configuration, gui or templates");
    }
    if (options.order == Order::get) {
        parser.require(info, "--to");
    }
    if (options.order == Order::send) {
        parser.require(info, "--from");
    }
    for (const char* option : {"--host", "--part-number", "--user"}) {
        parser.require(info, option);
    }
    checkPartNumber(options, info);
}

} // namespace

Options readOptions(int argc, const char* const* argv) {
    Options options;
    Parser parser(options);
    parser.parse(argc, argv);
    const CommandInfo* const chosen = parser.chosen();
    if (parser.has("--help")) {
        options.order = Order::help;
        options.helpText = helpFor(chosen);
        return options;
    }
    if (parser.has("--version")) {
        options.order = Order::version;
        return options;
    }
    parser.refuseUnknownWords();
    if (chosen == nullptr) {
        refuse(nullptr, "a command is missing: " + spelling::listed(commandWords()));
    }
    options.order = orderOf(*chosen);
    parser.refuseForeignOptions(*chosen);
    requireWhatItTakes(parser, options, *chosen);
    checkConnections(options, *chosen);
    return options;
}

} // namespace quillport
