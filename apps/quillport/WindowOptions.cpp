#include "WindowOptions.h"

#include "control/version.h"

#include <CLI/CLI.hpp>

#include <regex>

namespace quillport {

namespace {

constexpr int longestSeconds = 24 * 60 * 60;

/// HOST:PORT:HOST:PORT, each of them possibly empty, a host in brackets when it has colons of its own.
std::string connectToProblem(const std::string& text) {
    static const std::regex whole(R"((\[[^\[\]]*\]|[^\[\]:]*):\d{0,5}:(\[[^\[\]]*\]|[^\[\]:]*):\d{0,5})");
    return std::regex_match(text, whole) ? "" : "it is not HOST:PORT:HOST:PORT: " + text;
}

} // namespace

WindowOptions readWindowOptions(int argc, const char* const* argv) {
    WindowOptions options;
    int connectSeconds = static_cast<int>(options.connectTimeout.count());
    int silenceSeconds = static_cast<int>(options.silenceTimeout.count());

    CLI::App app("Opens the file-transfer panel of an RTU in a window.", "quillport");
    app.set_version_flag("--version", "quillport " + versionText());
    CLI::Option* link = app.add_option("LINK", options.link, "quillport://HOST/?partNumber=K5902");
    app.add_option("--host", options.host, "name or address of the RTU")->excludes(link);
    app.add_option("--part-number", options.partNumber, "part number of the RTU's CPU board")->excludes(link);
    app.add_option("--connect-to", options.connectTo,
                   "HOST:PORT:HOST:PORT: connect to the second HOST:PORT wherever the first is meant; may be "
                   "given again")
        ->allow_extra_args(false)
        ->check(connectToProblem);
    app.add_option("--connect-timeout", connectSeconds, "longest wait for a connection, in seconds")
        ->check(CLI::Range(1, longestSeconds))
        ->capture_default_str();
    app.add_option("--silence-timeout", silenceSeconds, "longest silence of the RTU, in seconds")
        ->check(CLI::Range(1, longestSeconds))
        ->capture_default_str();
    app.add_option("--screenshot", options.screenshot, "write the loaded panel to this PNG file and end")
        ->check([](const std::string& file) { return file.empty() ? "the file's name is empty" : ""; });
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        options.text = app.help();
    } catch (const CLI::CallForVersion& version) {
        options.text = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        throw WindowUsageError(std::string(error.what()) + "\nTry \"quillport --help\".");
    }
    options.connectTimeout = std::chrono::seconds(connectSeconds);
    options.silenceTimeout = std::chrono::seconds(silenceSeconds);
    return options;
}

} // namespace quillport
