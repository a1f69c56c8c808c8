// Judges a folder of configuration files as a send does, and has xmllint read the same files, in one run.
//
// Prints the times of both, turn by turn, and asserts nothing.

#include "control/QuillportControl.h"
#include "files/LocalFileSystem.h"
#include "files/native_path.h"
#include "ftp/CurlFtpClient.h"
#include "xml/LibXmlPlatform.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace quillport;
namespace fs = std::filesystem;

constexpr int fileCount = 2000;
constexpr std::size_t fileBytes = 20 * 1024;
constexpr int turns = 7;
constexpr const char* version = "K5902-041A-0300";

/// A program around the control that shows and asks nothing.
class SilentHost : public Host, public EventPump, public Prompter, public PickerDialog, public PanelListener {
public:
    void yieldToEvents() override {}
    void sleep(std::chrono::milliseconds /*duration*/) override {}
    std::string regionalDateText(DateTime /*value*/) override { return {}; }
    void propertyChanged(std::string_view /*name*/) override {}
    void serve(std::chrono::milliseconds /*atMost*/) override {}
    void wake() noexcept override {}
    Button show(const Prompt& prompt) override { return prompt.buttons.front(); }
    std::optional<std::string> pick(const PickerRequest& /*request*/) override { return {}; }
    void panelWritten(ControlId /*control*/, PanelProperty /*property*/) override {}
};

class Validator : public QuillportControl {
public:
    explicit Validator(ControlSite site) : QuillportControl(std::move(site)) {
        listSelector = "gui";
        OnFtpListItem(std::string(version) + ".gui", {}, 1, 0, {});
    }
    using QuillportControl::CheckSrcConfig;
};

/// A configuration file of points, as an RTU has them.
void writeConfiguration(const fs::path& path, int number) {
    std::ofstream file(path);
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIG VER=\"" << version << "\" NO=\"" << number
         << "\">\n";
    for (int point = 0; static_cast<std::size_t>(file.tellp()) < fileBytes; ++point) {
        file << "  <POINT ID=\"" << point << "\" TYPE=\"AI\" SCALE=\"0.01\"><NAME>Feeder " << point
             << " current</NAME><UNIT>A</UNIT><LIMIT LOW=\"0\" HIGH=\"400\"/></POINT>\n";
    }
    file << "</CONFIG>\n";
}

template <typename Work>
double secondsOf(Work work) {
    const auto started = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

} // namespace

int main() {
    const fs::path folder = fs::temp_directory_path() / "quillport-validation-benchmark";
    fs::remove_all(folder);
    fs::create_directories(folder);
    for (int number = 0; number < fileCount; ++number) {
        writeConfiguration(folder / ("config" + std::to_string(number) + ".xml"), number);
    }

    SilentHost host;
    LocalFileSystem files;
    LibXmlPlatform xml;
    Validator control({host, host, host, host, files, xml, std::make_unique<CurlFtpClient>(host)});
    const std::string localFolder = controlPath(folder) + "\\";
    const std::string peer = "find '" + folder.string() + "' -name '*.xml' -exec xmllint --noout {} +";

    std::vector<double> own;
    std::vector<double> others;
    std::printf("%d files of %zu bytes: seconds\n   CheckSrcConfig   xmllint --noout\n", fileCount,
                fileBytes);
    for (int turn = 0; turn < turns; ++turn) {
        std::string invalid;
        bool versionFailed = false;
        own.push_back(secondsOf([&] { control.CheckSrcConfig(localFolder, invalid, versionFailed); }));
        int status = 0;
        others.push_back(secondsOf([&] { status = std::system(peer.c_str()); }));
        if (!invalid.empty() || versionFailed || status != 0) {
            std::fprintf(stderr, "the files are not the good ones that this compares: %s\n", invalid.c_str());
            return EXIT_FAILURE;
        }
        std::printf("%17.3f %17.3f\n", own.back(), others.back());
    }
    std::printf("median %10.3f %17.3f   ratio %.2f (target: at most 1)\n", median(own), median(others),
                median(own) / median(others));
    fs::remove_all(folder);
    return EXIT_SUCCESS;
}
