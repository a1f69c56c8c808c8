#include "window/WindowTest.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace quillport::test {

namespace {

/// In no directory: only the redirections lead anywhere.
const std::string rtuName = "rtu.test";

/// Short, for tests of RTUs that fall silent.
constexpr std::chrono::seconds patience{20};

} // namespace

WindowTest::WindowTest() : folderBefore_(QDir::currentPath()) {
    QDir::setCurrent(folder.path());
}

WindowTest::~WindowTest() {
    QDir::setCurrent(folderBefore_);
}

void WindowTest::open(const std::vector<std::string>& rtuOptions, const std::string& board) {
    std::vector<std::string> options{"--board", board};
    options.insert(options.end(), rtuOptions.begin(), rtuOptions.end());
    rtu = std::make_unique<SimulatedRtu>(options);
    makePage();
    page->setAddress(QString::fromStdString(rtuName), QString::fromStdString(board));
    page->show();
    page->activateWindow();
    hand.waitFor("the window in front", [this] { return QApplication::activeWindow() == page.get(); });
    page->load();
    hand.waitFor("the control", [this] { return page->control() != nullptr; });
}

void WindowTest::makePage() {
    HttpOptions http;
    http.connectTo = rtu->connectTo(rtuName);
    http.silenceTimeout = patience;
    http.cancelled = [this] {
        host.serve(std::chrono::milliseconds::zero());
        return false;
    };
    xml = std::make_unique<LibXmlPlatform>(http);
    page = std::make_unique<ControlPage>(
        host, ControlParts{.files = files, .xml = *xml, .makeFtpClient = [this] {
                               CurlFtpOptions options;
                               options.connectTo = rtu->connectTo(rtuName);
                               options.silenceTimeout = patience;
                               return std::make_unique<CurlFtpClient>(host, options);
                           }});
}

void WindowTest::openAndLogIn(const std::vector<std::string>& rtuOptions, const std::string& board) {
    open(rtuOptions, board);
    logIn();
    ASSERT_EQ(shown(ControlId::txtResult), "Connected to RTU");
}

void WindowTest::logIn() {
    typeInto(ControlId::txt_username, "rtu");
    typeInto(ControlId::txt_password, "rtu");
    click(ControlId::cmd_connect);
}

std::string WindowTest::shown(ControlId id) const {
    const QWidget* control = page->panel()->widgetOf(id);
    QString text;
    if (const auto* label = qobject_cast<const QLabel*>(control)) {
        text = label->text();
    } else if (const auto* box = qobject_cast<const QLineEdit*>(control)) {
        text = box->text();
    } else if (const auto* combo = qobject_cast<const QComboBox*>(control)) {
        text = combo->currentText();
    } else if (const auto* button = qobject_cast<const QPushButton*>(control)) {
        text = button->text();
    } else if (const auto* frame = qobject_cast<const QGroupBox*>(control)) {
        text = frame->title();
    }
    return text.toStdString();
}

void WindowTest::click(ControlId id) {
    QTest::mouseClick(page->panel()->widgetOf(id), Qt::LeftButton);
}

void WindowTest::typeInto(ControlId id, const std::string& text) {
    auto& box = widget<QLineEdit>(id);
    box.setFocus();
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    QTest::keyClicks(&box, QString::fromStdString(text));
}

void WindowTest::choose(const std::string& fileType) {
    auto& combo = widget<QComboBox>(ControlId::cmbFileType);
    auto* line = combo.lineEdit();
    line->selectAll();
    QTest::keyClicks(line, QString::fromStdString(fileType));
}

Operator::Condition WindowTest::resultBegins(const std::string& text) const {
    return [this, text] { return page->isBusy() && shown(ControlId::txtResult).starts_with(text); };
}

std::filesystem::path WindowTest::local(const std::string& below) const {
    return std::filesystem::path(folder.path().toStdString()) / below;
}

void WindowTest::write(const std::string& below, const std::string& contents) const {
    std::filesystem::create_directories(local(below).parent_path());
    std::ofstream(local(below), std::ios::binary) << contents;
}

std::string WindowTest::read(const std::string& below) const {
    std::ostringstream contents;
    contents << std::ifstream(local(below), std::ios::binary).rdbuf();
    return contents.str();
}

std::vector<std::string> WindowTest::filesIn(const std::string& below) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(local(below))) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace quillport::test
