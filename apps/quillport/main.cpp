#include "WindowOptions.h"

#include "files/LocalFileSystem.h"
#include "ftp/CurlFtpClient.h"
#include "qt/ControlPage.h"
#include "qt/QtHost.h"
#include "qt/TerminationNotice.h"
#include "qt/qt_text.h"
#include "qt/rtu_link.h"
#include "xml/LibXmlPlatform.h"

#include <QApplication>
#include <QSaveFile>
#include <QTimer>

#include <clocale>
#include <cstdlib>
#include <iostream>

using namespace quillport;

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

int complain(const std::string& problem, int status) {
    std::cerr << "quillport: " << problem << std::endl;
    return status;
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// Where the program can show itself. A picture needs no display; without one a window is not to be had.
bool choosePlatform(const WindowOptions& options) {
    if (isSet("QT_QPA_PLATFORM")) {
        return true;
    }
    if (!options.screenshot.empty()) {
        return qputenv("QT_QPA_PLATFORM", "offscreen");
    }
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
#else
    return true;
#endif
}

CurlFtpOptions ftpOptions(const WindowOptions& options) {
    CurlFtpOptions ftp;
    ftp.connectTimeout = options.connectTimeout;
    ftp.silenceTimeout = options.silenceTimeout;
    ftp.connectTo = options.connectTo;
    return ftp;
}

HttpOptions httpOptions(const WindowOptions& options, QtHost& host) {
    HttpOptions http;
    http.connectTimeout = options.connectTimeout;
    http.silenceTimeout = options.silenceTimeout;
    http.connectTo = options.connectTo;
    http.cancelled = [&host] {
        host.serve(std::chrono::milliseconds::zero());
        return false;
    };
    return http;
}

RtuLink addressOf(const WindowOptions& options) {
    if (!options.link.empty()) {
        return parseRtuLink(options.link);
    }
    return {options.host.value_or(""), options.partNumber.value_or("")};
}

/// The panel as it comes up, written to a file.
int writePicture(const ControlPage& page, const std::string& file) {
    if (page.isBusy() || page.control() == nullptr) {
        return complain("the panel did not come up", failed);
    }
    QSaveFile picture(qtText(file));
    const bool written =
        picture.open(QIODevice::WriteOnly) && page.panel()->grab().save(&picture, "PNG") && picture.commit();
    return written ? EXIT_SUCCESS
                   : complain("cannot write " + file + ": " + plainText(picture.errorString()), failed);
}

int takePicture(const ControlPage& page, const std::string& file) {
    // Its time comes right behind that of the load.
    QTimer pictureTime;
    pictureTime.setSingleShot(true);
    QObject::connect(&pictureTime, &QTimer::timeout, [&] { QApplication::exit(writePicture(page, file)); });
    pictureTime.start(0);
    return QApplication::exec();
}

int showWindow(ControlPage& page) {
    const TerminationNotice termination;
    QObject::connect(&termination, &TerminationNotice::received, &page, &QWidget::close);
    page.show();
    return QApplication::exec();
}

int runWindow(const WindowOptions& options) {
    QtHost host;
    LocalFileSystem files;
    LibXmlPlatform xml(httpOptions(options, host));
    ControlPage page(host, {.files = files, .xml = xml, .makeFtpClient = [&] {
                                return std::make_unique<CurlFtpClient>(host, ftpOptions(options));
                            }});
    try {
        const RtuLink address = addressOf(options);
        page.setAddress(qtText(address.hostName), qtText(address.partNumber));
    } catch (const LinkError& error) {
        // A link comes from another program, so nobody may be looking at the error output.
        if (options.screenshot.empty()) {
            host.show({.text = error.what(), .icon = Icon::exclamation});
        }
        return complain(error.what(), wrongUsage);
    }
    if (options.loadsAtOnce()) {
        page.load();
    }
    return options.screenshot.empty() ? showWindow(page) : takePicture(page, options.screenshot);
}

} // namespace

int main(int argc, char** argv) {
    WindowOptions options;
    try {
        options = readWindowOptions(argc, argv);
    } catch (const WindowUsageError& error) {
        return complain(error.what(), wrongUsage);
    }
    if (!options.text.empty()) {
        std::cout << options.text;
        return EXIT_SUCCESS;
    }
    if (!choosePlatform(options)) {
        return complain(
            "there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set); quillportctl works "
            "without one",
            failed);
    }
    // The command line is this program's own, so Qt gets none of it.
    int qtArgc = 1;
    QApplication application(qtArgc, argv);
    // Qt has taken over the user's locale; numbers in protocols and files have one form everywhere.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setDesktopFileName(QStringLiteral("quillport"));
    try {
        return runWindow(options);
    } catch (const std::exception& error) {
        return complain(error.what(), failed);
    }
}
