#pragma once

#include "control/QuillportControl.h"
#include "qt/PanelWidget.h"
#include "qt/QtHost.h"

#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

class QComboBox;
class QLineEdit;
class QScrollArea;

namespace quillport {

/// What a page needs for its controls besides a window. All of it outlives the page.
struct ControlParts {
    FileSystem& files;
    XmlPlatform& xml;
    /// A new client for a new control.
    std::function<std::unique_ptr<FtpClient>()> makeFtpClient;
};

/// The page that holds the control: the RTU's host name, the board, and the panel. Loading destroys the
/// control that is there and makes a new one, as a page load does, and assigns HostName and partNumber in
/// this order.
///
/// A load or a close that is asked for while a call of the control runs has the call come to its end first:
/// no control and no window goes away under its own feet.
class ControlPage final : public QWidget {
    Q_OBJECT

public:
    ControlPage(QtHost& host, ControlParts parts);
    ~ControlPage() override;

    /// Fills the page's fields; an empty part number leaves the board as it stands.
    void setAddress(const QString& hostName, const QString& partNumber);

    /// Makes a new control for the page's fields, soon.
    void load();
    /// Makes a new control for what was loaded last, soon; for the fields when nothing was.
    void reload();

    /// 1 is normal size; kept between 1 and 3.
    void setScale(double scale);
    [[nodiscard]] double scale() const { return scale_; }

    /// The panel of the control that is there; null without one.
    [[nodiscard]] PanelWidget* panel() const { return panel_; }
    [[nodiscard]] QuillportControl* control() const { return control_.get(); }
    /// True while a call of the control runs.
    [[nodiscard]] bool isBusy() const { return runningCalls_ > 0; }

signals:
    /// A new control is there, with its properties assigned.
    void loaded();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    enum class Wanted { nothing, load, close };

    void buildFields();
    void buildActions();
    void addAction(const QString& name, const QList<QKeySequence>& keys, const std::function<void()>& act);
    void zoomBy(int steps);
    void showScaled();

    void want(Wanted what);
    void settle();
    void makeControl();
    void makePanel();
    void removeControl();

    /// Runs a call of the control, with whatever leaves it kept from Qt's event loop.
    void run(const std::function<void()>& call);
    void report(const std::string& problem);
    void operate(const std::function<void(QuillportControl&)>& call);

    QtHost& host_;
    ControlParts parts_;
    QLineEdit* hostField_ = nullptr;
    QComboBox* boardField_ = nullptr;
    QWidget* fields_ = nullptr;
    QScrollArea* stage_ = nullptr;
    double scale_ = 1.0;

    QString loadedHost_;
    QString loadedBoard_;
    PanelWidget* panel_ = nullptr;
    std::unique_ptr<QuillportControl> control_;
    int runningCalls_ = 0;
    Wanted wanted_ = Wanted::nothing;
    QTimer settleSoon_;
    bool everLoaded_ = false;
};

} // namespace quillport
