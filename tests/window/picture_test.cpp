#include "qt/PanelWidget.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

namespace quillport::test {

namespace {

class NoListener : public PanelListener {
public:
    void panelWritten(ControlId, PanelProperty) override {}
};

/// A panel as it stands in the middle of a Get.
void fill(Panel& panel) {
    panel.setText(ControlId::lbl_ver, "Ver : 4.1.0");
    panel.setText(ControlId::lblHostName, "rtu.test");
    panel.setText(ControlId::lblRtuName, "Harbour Road Substation 12");
    panel.setText(ControlId::lblPn, "K5902");
    panel.setText(ControlId::lblCfgName, "Harbour Road 132kV Rev C");
    panel.setText(ControlId::lblCfgDate, "17/03/2016");
    panel.setText(ControlId::lblGuiName, "K5902-041A-0300.gui");
    panel.setText(ControlId::lblGuiDate, "14/03/2016");
    panel.setText(ControlId::lblGuiSize, "24576");
    panel.setText(ControlId::lblApp, "K5902-041A-0300.out");
    panel.setText(ControlId::lblAppDate, "14/03/2016");
    panel.setText(ControlId::lblAppSize, "307200");
    panel.setText(ControlId::lblOs, "vxworks");
    panel.setText(ControlId::lblOsDate, "02/11/2015");
    panel.setText(ControlId::lblOsSize, "1048576");
    panel.setText(ControlId::txtResult, "Receiving vxworks...");
    panel.setValue(ControlId::barTotFile, 60);
    for (const ControlId id : {ControlId::cmdGetFile, ControlId::cmdSendFile, ControlId::cmdCancel}) {
        panel.setEnabled(id, true);
    }
    for (const ControlId id : {ControlId::cmd_connect, ControlId::txt_username, ControlId::txt_password}) {
        panel.setEnabled(id, false);
    }
    panel.takeTyping(ControlId::txt_username, "rtu");
    panel.takeTyping(ControlId::txt_password, "rtu");
}

/// Edge of the squares that two pictures are compared by, in pixels.
constexpr int square = 8;
/// Text of another font leaves another amount of ink in a square, and anti-aliasing another shade.
constexpr int toleranceWithText = 110;
constexpr int toleranceWithoutText = 12;

/// Mean colours of squares: what is left of a picture when the shapes of letters are gone.
QImage squares(const QImage& picture) {
    return picture.convertToFormat(QImage::Format_RGB32)
        .scaled(picture.width() / square, picture.height() / square, Qt::IgnoreAspectRatio,
                Qt::SmoothTransformation);
}

/// Which squares letters may reach.
QImage textMask(const PanelWidget& view) {
    QImage mask(view.width() / square + 1, view.height() / square + 1, QImage::Format_RGB32);
    mask.fill(Qt::black);
    for (const ControlDesign& design : panelTable()) {
        const QWidget* control = view.widgetOf(design.id);
        if (design.kind == ControlKind::progressBar) {
            continue;
        }
        QRect reach(control->mapTo(&view, QPoint(0, 0)), control->size());
        if (design.kind == ControlKind::frame) {
            reach.setHeight(2 * square);
        }
        for (int y = reach.top() / square; y <= reach.bottom() / square && y < mask.height(); ++y) {
            for (int x = reach.left() / square; x <= reach.right() / square && x < mask.width(); ++x) {
                mask.setPixelColor(x, y, Qt::white);
            }
        }
    }
    return mask;
}

int difference(const QColor& one, const QColor& other) {
    return std::max({std::abs(one.red() - other.red()), std::abs(one.green() - other.green()),
                     std::abs(one.blue() - other.blue())});
}

/// The first square that differs too much; empty when there is none.
std::string firstDifference(const QImage& actual, const QImage& kept, const QImage& mask) {
    const QImage actualSquares = squares(actual);
    const QImage keptSquares = squares(kept);
    for (int y = 0; y < actualSquares.height(); ++y) {
        for (int x = 0; x < actualSquares.width(); ++x) {
            const bool text = mask.pixelColor(x, y) == Qt::white;
            const int by = difference(actualSquares.pixelColor(x, y), keptSquares.pixelColor(x, y));
            if (by > (text ? toleranceWithText : toleranceWithoutText)) {
                return "at " + std::to_string(x * square) + ", " + std::to_string(y * square) + " by " +
                       std::to_string(by);
            }
        }
    }
    return "";
}

class Picture : public testing::Test {
protected:
    Picture() {
        fill(panel);
        view.follow(panel);
        actual = view.grab().toImage();
    }

    [[nodiscard]] static QImage kept() { return QImage(QStringLiteral(QUILLPORT_KEPT_PICTURE)); }

    NoListener nobody;
    Panel panel{nobody};
    PanelWidget view{1.0};
    QImage actual;
};

// With QUILLPORT_KEEP_PICTURE set the picture is kept anew.
TEST_F(Picture, ThePanelLooksAsItDid) {
    if (qEnvironmentVariableIsSet("QUILLPORT_KEEP_PICTURE")) {
        ASSERT_FALSE(qEnvironmentVariableIsSet("CI")) << "a build server keeps no pictures";
        ASSERT_TRUE(actual.save(QStringLiteral(QUILLPORT_KEPT_PICTURE)));
    }
    ASSERT_EQ(actual.size(), kept().size());
    const std::string found = firstDifference(actual, kept(), textMask(view));
    if (!found.empty()) {
        const QString file = QDir::temp().filePath(QStringLiteral("quillport_panel_actual.png"));
        actual.save(file);
        ADD_FAILURE() << "the panel differs " << found << "; what it looks like now: " << file.toStdString();
    }
}

// The comparison is worth something: it sees each of these.
TEST_F(Picture, AWrongColourAMissingControlOrAShiftIsSeen) {
    const auto differs = [this] {
        return !firstDifference(view.grab().toImage(), kept(), textMask(view)).empty();
    };
    ASSERT_FALSE(differs());
    panel.setValue(ControlId::barTotFile, 40);
    view.panelWritten(ControlId::barTotFile, PanelProperty::value);
    EXPECT_TRUE(differs()) << "the bar";
    panel.setValue(ControlId::barTotFile, 60);
    view.panelWritten(ControlId::barTotFile, PanelProperty::value);
    ASSERT_FALSE(differs());
    QWidget* heading = view.widgetOf(ControlId::Label11);
    heading->hide();
    EXPECT_TRUE(differs()) << "a missing heading";
    heading->show();
    QWidget* button = view.widgetOf(ControlId::cmdSendFile);
    button->move(button->pos() + QPoint(0, 2 * square));
    EXPECT_TRUE(differs()) << "a button that has moved";
}

} // namespace

} // namespace quillport::test
