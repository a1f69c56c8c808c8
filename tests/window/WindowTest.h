#pragma once

#include "files/LocalFileSystem.h"
#include "ftp/CurlFtpClient.h"
#include "qt/ControlPage.h"
#include "qt/QtHost.h"
#include "servers/SimulatedRtu.h"
#include "window/Operator.h"
#include "xml/LibXmlPlatform.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class QLineEdit;

namespace quillport::test {

/// The real window on a simulated RTU, with an operator in front of it. Everything the operator keeps is in
/// a folder of the test's own, which is also the current one.
class WindowTest : public testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    /// Starts the RTU with further options of the simulator, and a window that has loaded its panel.
    void open(const std::vector<std::string>& rtuOptions = {}, const std::string& board = "K5902");
    /// The same, logged in.
    void openAndLogIn(const std::vector<std::string>& rtuOptions = {}, const std::string& board = "K5902");
    void logIn();

    template <typename Widget>
    [[nodiscard]] Widget& widget(ControlId id) const {
        return *qobject_cast<Widget*>(page->panel()->widgetOf(id));
    }
    /// What a control shows: caption or text.
    [[nodiscard]] std::string shown(ControlId id) const;
    void click(ControlId id);
    void typeInto(ControlId id, const std::string& text);
    void choose(const std::string& fileType);

    /// True while a call of the control runs and the result reads so.
    [[nodiscard]] Operator::Condition resultBegins(const std::string& text) const;

    /// A file or folder of the operator's.
    [[nodiscard]] std::filesystem::path local(const std::string& below = {}) const;
    void write(const std::string& below, const std::string& contents) const;
    [[nodiscard]] std::string read(const std::string& below) const;
    /// Names of the files in a folder of the operator's, sorted.
    [[nodiscard]] std::vector<std::string> filesIn(const std::string& below) const;

    QTemporaryDir folder;
    std::unique_ptr<SimulatedRtu> rtu;
    QtHost host;
    LocalFileSystem files;
    std::unique_ptr<LibXmlPlatform> xml;
    Operator hand;
    std::unique_ptr<ControlPage> page;

private:
    void makePage();

    QString folderBefore_;
};

} // namespace quillport::test
