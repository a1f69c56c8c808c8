#include "qt/CaptionLabel.h"
#include "qt/PanelWidget.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QtTest>

#include <cmath>

namespace quillport::test {

namespace {

class NoListener : public PanelListener {
public:
    void panelWritten(ControlId, PanelProperty) override {}
};

/// A panel with its widgets, on the screen.
class PanelView : public testing::Test {
protected:
    PanelView() { show(1.0); }

    void show(double scale) {
        view = std::make_unique<PanelWidget>(scale);
        view->show();
        view->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    }
    void write(ControlId id, const std::string& text) {
        panel.setText(id, text);
        view->panelWritten(id, wordingOf(designOf(id).kind).value());
    }
    template <typename Widget>
    [[nodiscard]] Widget& widget(ControlId id) const {
        return *qobject_cast<Widget*>(view->widgetOf(id));
    }
    /// The colour of the pixel at a point of a control, given in pixels of normal size from its corner.
    [[nodiscard]] QColor pixel(ControlId id, double x, double y) const {
        const QPoint corner = view->widgetOf(id)->mapTo(view.get(), QPoint(0, 0));
        const QPoint point = corner + (QPointF(x, y) * view->scale()).toPoint();
        return view->grab().toImage().pixelColor(point);
    }

    NoListener nobody;
    Panel panel{nobody};
    std::unique_ptr<PanelWidget> view;
};

QColor expected(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

/// The contrast of two colours as accessibility guidelines reckon it, from 1 to 21.
double contrast(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double brighter = std::max(luminance(one), luminance(other));
    const double darker = std::min(luminance(one), luminance(other));
    return (brighter + 0.05) / (darker + 0.05);
}

std::string wordingShownBy(const QWidget* widget) {
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->text().toStdString();
    }
    if (const auto* frame = qobject_cast<const QGroupBox*>(widget)) {
        return frame->title().toStdString();
    }
    if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
        return button->text().toStdString();
    }
    if (const auto* box = qobject_cast<const QLineEdit*>(widget)) {
        return box->text().toStdString();
    }
    const auto* combo = qobject_cast<const QComboBox*>(widget);
    return combo != nullptr ? combo->currentText().toStdString() : "";
}

const char* className(ControlKind kind) {
    switch (kind) {
    case ControlKind::frame:
        return "QGroupBox";
    case ControlKind::label:
        return "QLabel";
    case ControlKind::comboBox:
        return "QComboBox";
    case ControlKind::textBox:
        return "QLineEdit";
    case ControlKind::button:
        return "QPushButton";
    case ControlKind::progressBar:
        break;
    }
    return "QProgressBar";
}

TEST_F(PanelView, EveryControlOfTheTableIsThere) {
    for (const ControlDesign& design : panelTable()) {
        const std::string name(design.name);
        QWidget* found = view->findChild<QWidget*>(QString::fromStdString(name));
        ASSERT_EQ(found, view->widgetOf(design.id)) << name;
        EXPECT_TRUE(found->inherits(className(design.kind))) << name;
        EXPECT_EQ(found->parentWidget(), design.parent ? view->widgetOf(*design.parent) : view.get()) << name;
        EXPECT_EQ(wordingShownBy(found), design.text) << name;
        EXPECT_EQ(found->isEnabled(), design.enabled) << name;
        EXPECT_EQ(found->toolTip().toStdString(), design.toolTip) << name;
    }
}

TEST_F(PanelView, PositionsAreTheTablesAtEveryScale) {
    for (const double scale : {1.0, 1.25, 2.0, 3.0}) {
        view->setScale(scale);
        EXPECT_EQ(view->size(), QSize(static_cast<int>(std::lround(panelWidth / 15.0 * scale)),
                                      static_cast<int>(std::lround(panelHeight / 15.0 * scale))));
        for (const ControlDesign& design : panelTable()) {
            const Twips& twips = design.position;
            const QRect place = view->widgetOf(design.id)->geometry();
            const auto edge = [scale](std::int32_t at) {
                return static_cast<int>(std::lround(at / 15.0 * scale));
            };
            EXPECT_EQ(place,
                      QRect(QPoint(edge(twips.left), edge(twips.top)),
                            QPoint(edge(twips.left + twips.width) - 1, edge(twips.top + twips.height) - 1)))
                << design.name << " at " << scale;
        }
    }
}

TEST_F(PanelView, FontsAreTheDesignsAndGrowWithTheScale) {
    for (const double scale : {1.0, 2.0, 3.0}) {
        view->setScale(scale);
        for (const ControlDesign& design : panelTable()) {
            const QFont& font = view->widgetOf(design.id)->font();
            const bool runMode = design.style == ControlStyle::runMode;
            // 8.25 and 9.75 points at 96 pixels to the inch.
            EXPECT_EQ(font.pixelSize(), static_cast<int>((runMode ? 13 : 11) * scale)) << design.name;
            EXPECT_EQ(font.bold(), design.style == ControlStyle::heading) << design.name;
            EXPECT_EQ(font.families().front(), runMode ? "Tahoma" : "MS Sans Serif") << design.name;
        }
        const auto& combo = widget<QComboBox>(ControlId::cmbFileType);
        EXPECT_EQ(combo.lineEdit()->font().pixelSize(), static_cast<int>(11 * scale));
    }
}

TEST_F(PanelView, ColoursAreTheDesigns) {
    for (const double scale : {1.0, 2.0}) {
        view->setScale(scale);
        for (const ControlDesign& design : panelTable()) {
            const std::string name(design.name);
            const QPalette palette = view->widgetOf(design.id)->palette();
            if (design.style == ControlStyle::heading) {
                EXPECT_EQ(pixel(design.id, 100, 1), expected(headingTeal)) << name;
                EXPECT_EQ(palette.color(QPalette::Window), expected(headingTeal)) << name;
                EXPECT_EQ(palette.color(QPalette::WindowText), QColor(Qt::white)) << name;
            } else if (design.style == ControlStyle::teal) {
                EXPECT_EQ(pixel(design.id, 4, 4), expected(headingTeal)) << name;
            } else if (design.kind == ControlKind::label) {
                EXPECT_EQ(palette.color(QPalette::Window), expected(panelBackground)) << name;
                const bool red = design.style == ControlStyle::runMode;
                EXPECT_EQ(palette.color(QPalette::WindowText), red ? expected(runModeRed) : QColor(Qt::black))
                    << name;
            } else if (design.kind == ControlKind::frame) {
                EXPECT_EQ(palette.color(QPalette::Window), expected(panelBackground)) << name;
                EXPECT_EQ(pixel(design.id, 6, 100), expected(panelBackground)) << name;
            } else if (design.kind == ControlKind::textBox || design.kind == ControlKind::comboBox) {
                EXPECT_EQ(pixel(design.id, 60, 3), QColor(Qt::white)) << name;
            }
        }
        // Nothing tells the hidden spot from the background.
        for (const double x : {20.0, 23.0}) {
            EXPECT_EQ(pixel(ControlId::lbl_Backdoor, x, 12), expected(panelBackground));
        }
    }
}

TEST_F(PanelView, TheDesktopsDarkPaletteChangesNothing) {
    const QPalette bright = QApplication::palette();
    const QImage before = view->grab().toImage();
    QPalette dark(QColor(40, 40, 44), QColor(24, 24, 28));
    dark.setColor(QPalette::Base, QColor(16, 16, 18));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    dark.setColor(QPalette::ButtonText, QColor(230, 230, 230));
    QApplication::setPalette(dark);
    EXPECT_EQ(view->grab().toImage(), before) << "a panel that is there already";
    show(1.0);
    const QImage after = view->grab().toImage();
    const auto& list = *widget<QComboBox>(ControlId::cmbFileType).view();
    EXPECT_GT(contrast(list.palette().color(QPalette::Text), list.palette().color(QPalette::Base)), 7.0);
    QApplication::setPalette(bright);
    EXPECT_EQ(after, before) << "a new panel";
}

TEST_F(PanelView, EveryTextCanBeReadDisabledToo) {
    for (const ControlDesign& design : panelTable()) {
        QWidget* control = view->widgetOf(design.id);
        if (design.kind != ControlKind::button && design.kind != ControlKind::textBox) {
            continue;
        }
        for (const bool enabled : {true, false}) {
            control->setEnabled(enabled);
            control->ensurePolished();
            const QPalette palette = control->palette();
            const bool button = design.kind == ControlKind::button;
            const QColor text = palette.color(button ? QPalette::ButtonText : QPalette::Text);
            EXPECT_GT(contrast(text, pixel(design.id, 6, 4)), enabled ? 4.5 : 3.0)
                << design.name << (enabled ? "" : " disabled");
        }
    }
}

TEST_F(PanelView, ANameTooLongIsCutAndShownWholeInItsToolTip) {
    view->follow(panel);
    auto& label = widget<CaptionLabel>(ControlId::lblRtuName);
    write(ControlId::lblRtuName, "Harbour Road");
    EXPECT_FALSE(label.isCut());
    EXPECT_EQ(label.toolTip(), "");
    const QString longName = "A <b>substation</b> & pumping station whose name has no end";
    write(ControlId::lblRtuName, longName.toStdString());
    EXPECT_TRUE(label.isCut());
    EXPECT_EQ(label.text(), longName) << "the caption is storage and stays whole";
    EXPECT_TRUE(label.toolTip().contains(longName.toHtmlEscaped()));
    view->setScale(2.0);
    EXPECT_TRUE(label.isCut());
    write(ControlId::lblRtuName, "Harbour Road");
    EXPECT_EQ(label.toolTip(), "");
}

TEST_F(PanelView, ANameALittleTooLongIsSetNarrower) {
    view->follow(panel);
    auto& label = widget<CaptionLabel>(ControlId::lblCfgDate);
    std::string text;
    while (QFontMetrics(label.font()).horizontalAdvance(QString::fromStdString(text)) <= label.width()) {
        text += "0";
    }
    write(ControlId::lblCfgDate, text);
    EXPECT_FALSE(label.isCut());
}

TEST_F(PanelView, AResultTooLongForItsBoxIsShownWholeInItsToolTip) {
    view->follow(panel);
    const QWidget* box = view->widgetOf(ControlId::txtResult);
    write(ControlId::txtResult, "Receiving a_file_with_a_name_that_is_longer.out...");
    EXPECT_TRUE(box->toolTip().contains("a_file_with_a_name_that_is_longer.out..."));
    write(ControlId::txtResult, "OK");
    EXPECT_EQ(box->toolTip(), "");
}

TEST_F(PanelView, TheFocusStaysInThePanelWhenItsFieldCloses) {
    view->follow(panel);
    view->activateWindow();
    view->widgetOf(ControlId::txt_password)->setFocus();
    for (const ControlId id : {ControlId::txt_username, ControlId::txt_password, ControlId::cmd_connect}) {
        panel.setEnabled(id, false);
        view->panelWritten(id, PanelProperty::enabled);
    }
    EXPECT_EQ(view->focusWidget(), view->widgetOf(ControlId::cmbFileType));
}

TEST_F(PanelView, ThePasswordShowsAStarForEachCharacter) {
    auto& box = widget<QLineEdit>(ControlId::txt_password);
    QTest::keyClicks(&box, "secret");
    EXPECT_EQ(box.displayText(), "******");
    EXPECT_EQ(box.text(), "secret");
}

TEST_F(PanelView, TypingStopsAtTheBoxesLimit) {
    for (const ControlDesign& design : panelTable()) {
        if (design.maxLength == 0) {
            continue;
        }
        auto& box = widget<QLineEdit>(design.id);
        QTest::keyClicks(&box, QString(design.maxLength + 5, QLatin1Char('x')));
        EXPECT_EQ(box.text().size(), design.maxLength) << design.name;
    }
}

TEST_F(PanelView, TabsFollowTheTable) {
    // A test of the order needs them all to take the focus.
    for (const ControlDesign& design : panelTable()) {
        view->widgetOf(design.id)->setEnabled(true);
    }
    std::vector<QWidget*> wanted;
    for (const ControlDesign& design : panelTable()) {
        if (design.kind != ControlKind::frame && design.kind != ControlKind::label &&
            design.kind != ControlKind::progressBar) {
            wanted.push_back(view->widgetOf(design.id));
        }
    }
    wanted.front()->setFocus();
    for (QWidget* expectedFocus : wanted) {
        EXPECT_EQ(QApplication::focusWidget(), expectedFocus) << expectedFocus->objectName().toStdString();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), wanted.front());
}

TEST_F(PanelView, BoxesAndTheBarHaveNamesForScreenReaders) {
    EXPECT_EQ(view->widgetOf(ControlId::cmbFileType)->accessibleName(), "File Type");
    EXPECT_EQ(view->widgetOf(ControlId::txtResult)->accessibleName(), "Result");
    EXPECT_EQ(view->widgetOf(ControlId::txt_username)->accessibleName(), "User Name");
    EXPECT_EQ(view->widgetOf(ControlId::txt_password)->accessibleName(), "Password");
    EXPECT_EQ(view->widgetOf(ControlId::barTotFile)->accessibleName(), "File Transfer");
}

TEST_F(PanelView, ItFollowsEveryWrite) {
    view->follow(panel);
    const auto tell = [&](ControlId id, PanelProperty property) { view->panelWritten(id, property); };
    write(ControlId::Frame2, "A & B");
    write(ControlId::cmdGetFile, "Get & go");
    write(ControlId::txtResult, "Receiving");
    EXPECT_EQ(widget<QGroupBox>(ControlId::Frame2).title(), "A & B");
    EXPECT_EQ(widget<QPushButton>(ControlId::cmdGetFile).text(), "Get && go");
    EXPECT_EQ(widget<QLineEdit>(ControlId::txtResult).text(), "Receiving");
    panel.setEnabled(ControlId::cmdGetFile, true);
    tell(ControlId::cmdGetFile, PanelProperty::enabled);
    EXPECT_TRUE(widget<QPushButton>(ControlId::cmdGetFile).isEnabled());
    panel.setVisible(ControlId::barTotFile, false);
    tell(ControlId::barTotFile, PanelProperty::visible);
    EXPECT_FALSE(widget<QProgressBar>(ControlId::barTotFile).isVisible());
    panel.setValue(ControlId::barTotFile, 42);
    tell(ControlId::barTotFile, PanelProperty::value);
    EXPECT_EQ(widget<QProgressBar>(ControlId::barTotFile).value(), 42);
    panel.addItem(ControlId::cmbFileType, "GUI");
    tell(ControlId::cmbFileType, PanelProperty::items);
    EXPECT_EQ(widget<QComboBox>(ControlId::cmbFileType).count(), 1);
    EXPECT_EQ(widget<QComboBox>(ControlId::cmbFileType).currentText(), "Configuration") << "the text stays";
}

TEST_F(PanelView, ItSaysWhatTheOperatorDoes) {
    std::vector<std::string> said;
    QObject::connect(view.get(), &PanelWidget::clicked,
                     [&](ControlId id) { said.push_back("click " + std::string(designOf(id).name)); });
    QObject::connect(view.get(), &PanelWidget::doubleClicked,
                     [&](ControlId id) { said.push_back("double click " + std::string(designOf(id).name)); });
    QObject::connect(view.get(), &PanelWidget::keyPressed, [&](ControlId id, int code, int shift) {
        said.push_back("key " + std::string(designOf(id).name) + " " + std::to_string(code) + " " +
                       std::to_string(shift));
    });
    QObject::connect(view.get(), &PanelWidget::typed, [&](ControlId id, const QString& text) {
        said.push_back("type " + std::string(designOf(id).name) + " " + text.toStdString());
    });
    QTest::mouseClick(view->widgetOf(ControlId::cmd_connect), Qt::LeftButton);
    QTest::mouseClick(view->widgetOf(ControlId::cmdGetFile), Qt::LeftButton); // disabled
    QTest::mouseDClick(view->widgetOf(ControlId::lbl_Backdoor), Qt::LeftButton);
    QTest::keyClick(view->widgetOf(ControlId::txt_password), Qt::Key_A);
    QTest::keyClick(view->widgetOf(ControlId::txt_password), Qt::Key_Enter, Qt::ShiftModifier);
    QTest::keyClick(widget<QComboBox>(ControlId::cmbFileType).lineEdit(), Qt::Key_End);
    QTest::keyClick(widget<QComboBox>(ControlId::cmbFileType).lineEdit(), Qt::Key_S);
    EXPECT_EQ(said, (std::vector<std::string>{"click cmd_connect", "double click lbl_Backdoor",
                                              "key txt_password 65 0", "type txt_password a",
                                              "key txt_password 16777248 1", // Shift itself
                                              "key txt_password 13 1", "type cmbFileType Configurations"}));
}

TEST_F(PanelView, AnEnterThatIsHeldDownIsOneEnter) {
    int enters = 0;
    QObject::connect(view.get(), &PanelWidget::keyPressed, [&](ControlId, int, int) { ++enters; });
    QWidget* box = view->widgetOf(ControlId::txt_password);
    QKeyEvent first(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(box, &first);
    QApplication::sendEvent(box, &repeated);
    QApplication::sendEvent(box, &repeated);
    EXPECT_EQ(enters, 1);
}

// The spot lies partly under the Connect button, where a press must reach the button.
TEST_F(PanelView, NoLabelCoversAButtonOrABox) {
    for (const ControlDesign& design : panelTable()) {
        if (design.kind == ControlKind::label || design.kind == ControlKind::frame) {
            continue;
        }
        QWidget* control = view->widgetOf(design.id);
        for (const QPoint corner : {control->rect().topLeft(), control->rect().topRight(),
                                    control->rect().bottomLeft(), control->rect().bottomRight()}) {
            QWidget* hit = view->childAt(control->mapTo(view.get(), corner));
            EXPECT_TRUE(hit == control || control->isAncestorOf(hit)) << design.name;
        }
    }
}

} // namespace

} // namespace quillport::test
