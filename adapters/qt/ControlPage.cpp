#include "qt/ControlPage.h"

#include "qt/panel_look.h"
#include "qt/qt_text.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace quillport {

namespace {

/// The steps of Ctrl + and Ctrl -.
constexpr std::array zoomSteps{1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

/// Counts a call for as long as it runs.
class RunningCall {
public:
    explicit RunningCall(int& count) : count_(count) { ++count_; }
    ~RunningCall() { --count_; }
    RunningCall(const RunningCall&) = delete;
    RunningCall& operator=(const RunningCall&) = delete;

private:
    int& count_;
};

} // namespace

ControlPage::ControlPage(QtHost& host, ControlParts parts) : host_(host), parts_(std::move(parts)) {
    host_.setWindow(this);
    setWindowTitle(qtText(projectName));
    settleSoon_.setSingleShot(true);
    connect(&settleSoon_, &QTimer::timeout, this, &ControlPage::settle);
    buildFields();
    buildActions();
    showScaled();
}

ControlPage::~ControlPage() {
    removeControl();
}

void ControlPage::buildFields() {
    fields_ = new QWidget(this);
    hostField_ = new QLineEdit(fields_);
    hostField_->setObjectName(QStringLiteral("pageHost"));
    boardField_ = new QComboBox(fields_);
    boardField_->setObjectName(QStringLiteral("pageBoard"));
    boardField_->setEditable(true);
    boardField_->setInsertPolicy(QComboBox::NoInsert);
    boardField_->setCompleter(nullptr);
    boardField_->addItems({QStringLiteral("K5901"), QStringLiteral("K5902")});
    auto* loadButton = new QPushButton(tr("&Load"), fields_);
    loadButton->setObjectName(QStringLiteral("pageLoad"));
    loadButton->setAutoDefault(true);
    auto* hostLabel = new QLabel(tr("RTU &host:"), fields_);
    hostLabel->setBuddy(hostField_);
    auto* boardLabel = new QLabel(tr("&Board:"), fields_);
    boardLabel->setBuddy(boardField_);

    auto* row = new QHBoxLayout(fields_);
    row->setContentsMargins(QMargins());
    row->addWidget(hostLabel);
    row->addWidget(hostField_, 1);
    row->addWidget(boardLabel);
    row->addWidget(boardField_);
    row->addWidget(loadButton);

    stage_ = new QScrollArea(this);
    stage_->setFrameShape(QFrame::NoFrame);
    stage_->setFocusPolicy(Qt::NoFocus);
    stage_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* page = new QVBoxLayout(this);
    page->addWidget(fields_);
    page->addWidget(stage_, 1);

    connect(loadButton, &QPushButton::clicked, this, &ControlPage::load);
    connect(hostField_, &QLineEdit::returnPressed, this, &ControlPage::load);
}

void ControlPage::buildActions() {
    addAction(QStringLiteral("reload"), {QKeySequence(Qt::Key_F5), QKeySequence(Qt::CTRL | Qt::Key_R)},
              [this] { reload(); });
    // "+" lies on the same key as "=" on many keyboards, where it would need Shift.
    addAction(QStringLiteral("zoomIn"),
              {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)},
              [this] { zoomBy(1); });
    addAction(QStringLiteral("zoomOut"), {QKeySequence(Qt::CTRL | Qt::Key_Minus)}, [this] { zoomBy(-1); });
    addAction(QStringLiteral("zoomReset"), {QKeySequence(Qt::CTRL | Qt::Key_0)}, [this] { setScale(1.0); });
}

void ControlPage::addAction(const QString& name, const QList<QKeySequence>& keys,
                            const std::function<void()>& act) {
    auto* action = new QAction(this);
    action->setObjectName(name);
    action->setShortcuts(keys);
    connect(action, &QAction::triggered, this, act);
    QWidget::addAction(action);
}

void ControlPage::setAddress(const QString& hostName, const QString& partNumber) {
    hostField_->setText(hostName);
    if (!partNumber.isEmpty()) {
        boardField_->setEditText(partNumber);
    }
}

void ControlPage::zoomBy(int steps) {
    const auto* const nearest =
        std::min_element(zoomSteps.begin(), zoomSteps.end(),
                         [this](double a, double b) { return std::abs(a - scale_) < std::abs(b - scale_); });
    const auto index =
        std::clamp<std::ptrdiff_t>(nearest - zoomSteps.begin() + steps, 0, std::ssize(zoomSteps) - 1);
    setScale(zoomSteps[static_cast<std::size_t>(index)]);
}

void ControlPage::setScale(double scale) {
    scale_ = std::clamp(scale, zoomSteps.front(), zoomSteps.back());
    if (panel_ != nullptr) {
        panel_->setScale(scale_);
    }
    showScaled();
}

// The window takes the size of the panel, as far as the screen has room for it.
void ControlPage::showScaled() {
    QFont font = QApplication::font();
    font.setPixelSize(scaledPixels(QFontInfo(font).pixelSize(), scale_));
    for (QWidget* field : fields_->findChildren<QWidget*>()) {
        field->setFont(font);
    }
    const QSize panelSize = scaledPosition({0, 0, panelWidth, panelHeight}, scale_).size();
    const QMargins margins = layout()->contentsMargins();
    const int fieldsHeight = fields_->sizeHint().height() + layout()->spacing();
    const QSize wanted =
        panelSize + QSize(margins.left() + margins.right(), margins.top() + margins.bottom() + fieldsHeight);
    resize(wanted.boundedTo(screen()->availableSize()));
}

void ControlPage::load() {
    loadedHost_ = hostField_->text();
    loadedBoard_ = boardField_->currentText();
    everLoaded_ = true;
    want(Wanted::load);
}

void ControlPage::reload() {
    if (!everLoaded_) {
        load();
        return;
    }
    want(Wanted::load);
}

void ControlPage::closeEvent(QCloseEvent* event) {
    if (isBusy()) {
        want(Wanted::close);
        event->ignore();
        return;
    }
    removeControl();
    event->accept();
}

void ControlPage::want(Wanted what) {
    if (wanted_ != Wanted::close) {
        wanted_ = what;
    }
    if (isBusy()) {
        host_.stopCalls(); // the outermost call settles it on its way out
        return;
    }
    // Not from here: the key or button that asked for it may belong to the panel that is to go.
    settleSoon_.start(0);
}

void ControlPage::settle() {
    if (isBusy() || wanted_ == Wanted::nothing) {
        return;
    }
    const Wanted what = std::exchange(wanted_, Wanted::nothing);
    host_.allowCalls();
    removeControl();
    if (what == Wanted::close) {
        close();
        return;
    }
    makeControl();
}

void ControlPage::makeControl() {
    setWindowTitle(loadedHost_.isEmpty() ? qtText(projectName)
                                         : loadedHost_ + QStringLiteral(" - ") + qtText(projectName));
    makePanel();
    run([this] {
        control_ = std::make_unique<QuillportControl>(ControlSite{.panel = *panel_,
                                                                  .host = host_,
                                                                  .prompter = host_,
                                                                  .picker = host_,
                                                                  .files = parts_.files,
                                                                  .xml = parts_.xml,
                                                                  .ftp = parts_.makeFtpClient()});
        panel_->follow(control_->panel());
        control_->put_HostName(plainText(loadedHost_));
        control_->put_partNumber(plainText(loadedBoard_));
    });
    if (control_ != nullptr) {
        panel_->widgetOf(ControlId::txt_username)->setFocus();
        emit loaded();
    }
}

void ControlPage::makePanel() {
    panel_ = new PanelWidget(scale_);
    panel_->setObjectName(QStringLiteral("panel"));
    stage_->setWidget(panel_);
    connect(panel_, &PanelWidget::clicked, this,
            [this](ControlId id) { operate([id](QuillportControl& control) { control.click(id); }); });
    connect(panel_, &PanelWidget::doubleClicked, this,
            [this](ControlId id) { operate([id](QuillportControl& control) { control.doubleClick(id); }); });
    connect(panel_, &PanelWidget::keyPressed, this, [this](ControlId id, int keyCode, int shift) {
        operate([=](QuillportControl& control) { control.keyDown(id, keyCode, shift); });
    });
    connect(panel_, &PanelWidget::typed, this, [this](ControlId id, const QString& text) {
        operate([&](QuillportControl& control) { control.type(id, plainText(text)); });
    });
}

void ControlPage::removeControl() {
    control_.reset();
    delete stage_->takeWidget();
    panel_ = nullptr;
}

void ControlPage::operate(const std::function<void(QuillportControl&)>& call) {
    if (control_ != nullptr && wanted_ == Wanted::nothing) {
        run([&] { call(*control_); });
    }
}

void ControlPage::run(const std::function<void()>& call) {
    {
        const RunningCall running(runningCalls_);
        try {
            call();
        } catch (const ProgramStop&) {
            // What is wanted in its place is settled below.
        } catch (const std::exception& problem) {
            report(problem.what());
        }
    }
    if (!isBusy() && wanted_ != Wanted::nothing) {
        settleSoon_.start(0);
    }
}

void ControlPage::report(const std::string& problem) {
    try {
        host_.show({.text = problem, .icon = Icon::stop});
    } catch (const ProgramStop&) {
        // Nobody is there to read it any more.
    }
}

} // namespace quillport
