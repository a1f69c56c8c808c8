// The window as window_benchmark.py measures it: the program's own parts, with hands that need no person.
//
//   window_probe start  CONNECT-TO...           says "painted" when the panel has been
//   window_probe get    FOLDER CONNECT-TO...    a Get of the application: seconds, longest gap
//   window_probe cancel FOLDER CONNECT-TO...    the same, cancelled in the middle: milliseconds

#include "files/LocalFileSystem.h"
#include "ftp/CurlFtpClient.h"
#include "qt/ControlPage.h"
#include "qt/QtHost.h"
#include "xml/LibXmlPlatform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

using namespace quillport;

namespace {

const std::string rtuName = "rtu.benchmark";

/// Says when the panel has been painted for the first time, and ends the program.
class FirstPaint : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && !seen_) {
            seen_ = true;
            // Once this event has been dealt with, the window is on the screen.
            QTimer::singleShot(0, this, [] {
                std::cout << "painted" << std::endl;
                QApplication::quit();
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool seen_ = false;
};

/// What an operator does during a Get, and what is measured on the way.
class Measurement : public QObject {
public:
    Measurement(ControlPage& page, QString folder, bool cancels)
        : page_(page), folder_(std::move(folder)), cancels_(cancels) {
        connect(&tick_, &QTimer::timeout, this, &Measurement::look);
        tick_.setTimerType(Qt::PreciseTimer);
        tick_.start(1);
    }

    void run() {
        QuillportControl& control = *page_.control();
        control.type(ControlId::txt_username, "rtu");
        control.type(ControlId::txt_password, "rtu");
        press(ControlId::cmd_connect);
        control.type(ControlId::cmbFileType, "Application");
        // The first line that the command writes is the one just before the transfer call.
        connect(page_.panel()->findChild<QLineEdit*>("txtResult"), &QLineEdit::textChanged, this, [this] {
            if (!sinceTransfer_.isValid()) {
                sinceTransfer_.start();
            }
        });
        press(ControlId::cmdGetFile);
        const double seconds = static_cast<double>(sinceTransfer_.nsecsElapsed()) / 1e9;
        std::cout << "{\"result\": \"" << control.panel().text(ControlId::txtResult)
                  << "\", \"seconds\": " << seconds << ", \"longest_gap_ms\": " << longestGapMs_
                  << ", \"cancel_ms\": " << cancelMs_ << "}" << std::endl;
        QApplication::quit();
    }

private:
    void press(ControlId id) { qobject_cast<QAbstractButton*>(page_.panel()->widgetOf(id))->click(); }

    void look() {
        if (receiving() && sinceTick_.isValid()) {
            longestGapMs_ = std::max(longestGapMs_, static_cast<double>(sinceTick_.nsecsElapsed()) / 1e6);
        }
        sinceTick_.restart();
        if (auto* picker = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            picker->findChild<QLineEdit*>("fileNameEdit")->setText(folder_ + "/Application");
            static_cast<QDialog*>(picker)->accept();
        } else if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            cancelMs_ = static_cast<double>(sinceCancel_.nsecsElapsed()) / 1e6;
            box->buttons().constFirst()->click();
        }
        if (cancels_ && receiving() && page_.control()->panel()[ControlId::barTotFile].value >= 10) {
            cancels_ = false;
            sinceCancel_.start();
            press(ControlId::cmdCancel);
        }
    }

    [[nodiscard]] bool receiving() const {
        return page_.isBusy() && page_.control()->panel().text(ControlId::txtResult).starts_with("Receiving");
    }

    ControlPage& page_;
    QString folder_;
    bool cancels_;
    QTimer tick_;
    QElapsedTimer sinceTick_;
    QElapsedTimer sinceTransfer_;
    QElapsedTimer sinceCancel_;
    double longestGapMs_ = 0;
    double cancelMs_ = 0;
};

int measure(const std::string& what, const QString& folder, const std::vector<std::string>& connectTo) {
    QtHost host;
    LocalFileSystem files;
    HttpOptions http;
    http.connectTo = connectTo;
    LibXmlPlatform xml(http);
    CurlFtpOptions ftp;
    ftp.connectTo = connectTo;
    ControlPage page(host, {.files = files, .xml = xml, .makeFtpClient = [&] {
                                return std::make_unique<CurlFtpClient>(host, ftp);
                            }});
    page.setAddress(QString::fromStdString(rtuName), QStringLiteral("K5902"));
    FirstPaint firstPaint;
    Measurement measurement(page, folder, what == "cancel");
    QObject::connect(&page, &ControlPage::loaded, &page, [&] {
        if (what == "start") {
            page.panel()->installEventFilter(&firstPaint);
        } else {
            QMetaObject::invokeMethod(
                &measurement, [&] { measurement.run(); }, Qt::QueuedConnection);
        }
    });
    page.load();
    page.show();
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty() || (words[0] != "start" && words.size() < 2)) {
        std::cerr << "usage: window_probe start CONNECT-TO... | get|cancel FOLDER CONNECT-TO..." << std::endl;
        return 2;
    }
    const bool starts = words[0] == "start";
    int qtArgc = 1;
    const QApplication application(qtArgc, argv);
    return measure(words[0], starts ? QString() : QString::fromStdString(words[1]),
                   {words.begin() + (starts ? 1 : 2), words.end()});
}
