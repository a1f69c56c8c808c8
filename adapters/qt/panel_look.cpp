#include "qt/panel_look.h"

#include <QtMath>

#include <algorithm>
#include <array>

namespace quillport {

namespace {

constexpr double twipsPerPixel = 15.0;

/// At normal size an inch has 96 pixels and 72 points.
constexpr double pixelsPerPoint = 96.0 / 72.0;
constexpr double panelPoints = 8.25;
constexpr double runModePoints = 9.75;

constexpr Colour highlightText{255, 255, 255};
constexpr Colour text{0, 0, 0};
constexpr Colour field{255, 255, 255};
constexpr Colour buttonFace{240, 240, 230};
constexpr Colour buttonFaceHot{250, 250, 244};
constexpr Colour buttonFaceDown{214, 214, 196};
constexpr Colour tealHot{0, 122, 122};
constexpr Colour tealDown{0, 80, 80};
constexpr Colour edge{112, 112, 96};
constexpr Colour tip{255, 255, 225};
/// Greyed, and still told from its background by a contrast of more than 3 to 1.
constexpr Colour disabledText{110, 110, 98};
constexpr Colour disabledField{236, 236, 222};
constexpr Colour disabledTextOnTeal{160, 200, 200};

Colour textColour(ControlStyle style) {
    switch (style) {
    case ControlStyle::heading:
    case ControlStyle::teal:
        return highlightText;
    case ControlStyle::runMode:
        return runModeRed;
    case ControlStyle::plain:
        break;
    }
    return text;
}

bool isTeal(ControlStyle style) {
    return style == ControlStyle::heading || style == ControlStyle::teal;
}

QString css(Colour colour) {
    return qtColour(colour).name();
}

} // namespace

QColor qtColour(Colour colour) {
    return {colour.red, colour.green, colour.blue};
}

int scaledPixels(double pixels, double scale) {
    return std::max(1, qRound(pixels * scale));
}

QRect scaledPosition(const Twips& position, double scale) {
    const auto edgeAt = [scale](std::int32_t twips) { return qRound(twips / twipsPerPixel * scale); };
    const int left = edgeAt(position.left);
    const int top = edgeAt(position.top);
    return {left, top, edgeAt(position.left + position.width) - left,
            edgeAt(position.top + position.height) - top};
}

QFont panelFont(ControlStyle style, double scale) {
    const bool runMode = style == ControlStyle::runMode;
    // Behind the design's own fonts stand those of like width that other systems have.
    QStringList families{QStringLiteral("Microsoft Sans Serif"), QStringLiteral("Arial"),
                         QStringLiteral("Liberation Sans"), QStringLiteral("Arimo"),
                         QStringLiteral("DejaVu Sans Condensed")};
    families.prepend(runMode ? QStringLiteral("Tahoma") : QStringLiteral("MS Sans Serif"));
    QFont font;
    font.setFamilies(families);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(scaledPixels((runMode ? runModePoints : panelPoints) * pixelsPerPoint, scale));
    font.setBold(style == ControlStyle::heading);
    return font;
}

QPalette panelPalette(ControlStyle style) {
    const Colour background = isTeal(style) ? headingTeal : panelBackground;
    QPalette palette(qtColour(background));
    const auto set = [&](QPalette::ColorRole role, Colour colour, Colour disabled) {
        palette.setColor(QPalette::Active, role, qtColour(colour));
        palette.setColor(QPalette::Inactive, role, qtColour(colour));
        palette.setColor(QPalette::Disabled, role, qtColour(disabled));
    };
    const Colour foreground = textColour(style);
    const Colour disabled = isTeal(style) ? disabledTextOnTeal : disabledText;
    set(QPalette::Window, background, background);
    set(QPalette::WindowText, foreground, disabled);
    set(QPalette::Button, isTeal(style) ? headingTeal : buttonFace, isTeal(style) ? headingTeal : buttonFace);
    set(QPalette::ButtonText, foreground, disabled);
    set(QPalette::Base, field, disabledField);
    set(QPalette::AlternateBase, field, disabledField);
    set(QPalette::Text, text, disabledText);
    set(QPalette::PlaceholderText, disabledText, disabledText);
    set(QPalette::BrightText, foreground, disabled);
    set(QPalette::Highlight, headingTeal, edge);
    set(QPalette::HighlightedText, highlightText, highlightText);
    set(QPalette::ToolTipBase, tip, tip);
    set(QPalette::ToolTipText, text, text);
    set(QPalette::Light, field, field);
    set(QPalette::Mid, edge, edge);
    set(QPalette::Dark, edge, edge);
    return palette;
}

QString panelStyleSheet(double scale) {
    const int line = scaledPixels(1, scale);
    const std::array<std::pair<QString, QString>, 17> words{{
        {QStringLiteral("@tealHot"), css(tealHot)},
        {QStringLiteral("@tealDown"), css(tealDown)},
        {QStringLiteral("@tealOff"), css(disabledTextOnTeal)},
        {QStringLiteral("@teal"), css(headingTeal)},
        {QStringLiteral("@faceHot"), css(buttonFaceHot)},
        {QStringLiteral("@faceDown"), css(buttonFaceDown)},
        {QStringLiteral("@face"), css(buttonFace)},
        {QStringLiteral("@fieldOff"), css(disabledField)},
        {QStringLiteral("@field"), css(field)},
        {QStringLiteral("@textOff"), css(disabledText)},
        {QStringLiteral("@text"), css(text)},
        {QStringLiteral("@onTeal"), css(highlightText)},
        {QStringLiteral("@edge"), css(edge)},
        {QStringLiteral("@tip"), css(tip)},
        {QStringLiteral("@line"), QString::number(line)},
        {QStringLiteral("@double"), QString::number(2 * line)},
        {QStringLiteral("@arrow"), QString::number(scaledPixels(17, scale))},
    }};
    QString sheet = QStringLiteral(R"(
QPushButton { background-color: @face; color: @text; border: @linepx solid @edge;
    border-radius: @doublepx; padding: 0px; margin: 0px; min-width: 0px; min-height: 0px; }
QPushButton:hover { background-color: @faceHot; }
QPushButton:pressed { background-color: @faceDown; }
QPushButton:focus { border: @doublepx solid @text; }
QPushButton:disabled { background-color: @face; color: @textOff; }
QPushButton[teal="true"] { background-color: @teal; color: @onTeal; }
QPushButton[teal="true"]:hover { background-color: @tealHot; }
QPushButton[teal="true"]:pressed { background-color: @tealDown; }
QPushButton[teal="true"]:disabled { background-color: @teal; color: @tealOff; }
QLineEdit, QComboBox { background-color: @field; color: @text; border: @linepx solid @edge;
    border-radius: 0px; padding: @linepx; margin: 0px; min-width: 0px; min-height: 0px;
    selection-background-color: @teal; selection-color: @onTeal; lineedit-password-character: 42; }
QLineEdit:focus, QComboBox:focus { border: @doublepx solid @teal; padding: 0px; }
QLineEdit:disabled, QComboBox:disabled { background-color: @fieldOff; color: @textOff; }
QComboBox QLineEdit, QComboBox QLineEdit:focus { border: 0px; padding: 0px; }
QComboBox::drop-down { width: @arrowpx; border: 0px; }
QComboBox::down-arrow { image: none; }
QComboBox QAbstractItemView { background-color: @field; color: @text; border: @linepx solid @edge;
    selection-background-color: @teal; selection-color: @onTeal; outline: 0px; }
QProgressBar { background-color: @field; border: @linepx solid @edge; border-radius: 0px; }
QProgressBar::chunk { background-color: @teal; margin: @linepx; }
QToolTip { background-color: @tip; color: @text; border: @linepx solid @edge; }
)");
    for (const auto& [word, value] : words) {
        sheet.replace(word, value);
    }
    return sheet;
}

} // namespace quillport
