#include "qt/PanelWidget.h"

#include "qt/CaptionFrame.h"
#include "qt/CaptionLabel.h"
#include "qt/FileTypeBox.h"
#include "qt/panel_look.h"
#include "qt/qt_text.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

namespace quillport {

namespace {

constexpr int enterKeyCode = 13;

bool isEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

int classicShift(Qt::KeyboardModifiers modifiers) {
    return (modifiers.testFlag(Qt::ShiftModifier) ? 1 : 0) |
           (modifiers.testFlag(Qt::ControlModifier) ? 2 : 0) | (modifiers.testFlag(Qt::AltModifier) ? 4 : 0);
}

Qt::AlignmentFlag verticalAlignment(ControlStyle style) {
    switch (style) {
    case ControlStyle::heading:
        return Qt::AlignVCenter;
    case ControlStyle::runMode:
        return Qt::AlignBottom; // the label above reaches down into this one
    case ControlStyle::plain:
    case ControlStyle::teal:
        break;
    }
    return Qt::AlignTop;
}

/// A caption in which "&" is a plain character.
QString unmarked(QString caption) {
    return caption.replace(QLatin1Char('&'), QLatin1String("&&"));
}

QString wordingOfWidget(const QWidget* widget) {
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->text();
    }
    const auto* frame = qobject_cast<const QGroupBox*>(widget);
    return frame != nullptr ? frame->title() : QString();
}

void setTextAndShowItsStart(QLineEdit& box, const QString& text) {
    if (box.text() != text) {
        box.setText(text);
        box.setCursorPosition(0);
    }
}

/// A style sheet keeps a font from reaching the parts of a combo box by itself.
void setFontThroughout(QWidget& widget, const QFont& font) {
    widget.setFont(font);
    if (const auto* combo = qobject_cast<QComboBox*>(&widget)) {
        combo->lineEdit()->setFont(font);
        combo->view()->setFont(font);
    }
}

} // namespace

PanelWidget::PanelWidget(double scale, QWidget* parent) : QWidget(parent), scale_(scale) {
    setAutoFillBackground(true);
    setPalette(panelPalette(ControlStyle::plain));
    for (const ControlDesign& design : panelTable()) {
        QWidget* holder = design.parent ? widgetOf(*design.parent) : this;
        QWidget* widget = makeWidget(design, holder);
        widget->setObjectName(qtText(design.name));
        widget->setPalette(panelPalette(design.style));
        widget->setToolTip(qtText(design.toolTip));
        widget->setEnabled(design.enabled);
        widgets_[static_cast<std::size_t>(design.id)] = widget;
        applyWording(design.id, qtText(design.text));
    }
    // A label is flat: it never lies over a button or a box.
    for (const ControlDesign& design : panelTable()) {
        if (design.kind != ControlKind::label && design.kind != ControlKind::frame) {
            widgetOf(design.id)->raise();
        }
    }
    orderTabs();
    nameForAssistiveTechnology();
    setScale(scale);
}

QWidget* PanelWidget::makeWidget(const ControlDesign& design, QWidget* parent) {
    switch (design.kind) {
    case ControlKind::frame:
        return new CaptionFrame(parent);
    case ControlKind::label:
        return makeLabel(design, parent);
    case ControlKind::comboBox:
        return makeComboBox(design, parent);
    case ControlKind::textBox:
        return makeTextBox(design, parent);
    case ControlKind::button:
        return makeButton(design, parent);
    case ControlKind::progressBar:
        break;
    }
    auto* bar = new QProgressBar(parent);
    bar->setRange(0, 100);
    bar->setTextVisible(false);
    return bar;
}

QWidget* PanelWidget::makeLabel(const ControlDesign& design, QWidget* parent) {
    auto* label = new CaptionLabel(parent);
    // The other labels lie so close together that a lower one would cover the text above it.
    label->setAutoFillBackground(design.style == ControlStyle::heading);
    label->setAlignment((design.alignment == Alignment::centre ? Qt::AlignHCenter : Qt::AlignLeft) |
                        verticalAlignment(design.style));
    connect(label, &CaptionLabel::doubleClicked, this, [this, id = design.id] { emit doubleClicked(id); });
    return label;
}

QWidget* PanelWidget::makeButton(const ControlDesign& design, QWidget* parent) {
    auto* button = new QPushButton(parent);
    button->setProperty("teal", design.style == ControlStyle::teal);
    button->setAutoDefault(true);
    connect(button, &QPushButton::clicked, this, [this, id = design.id] { emit clicked(id); });
    return button;
}

QWidget* PanelWidget::makeTextBox(const ControlDesign& design, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    if (design.maxLength > 0) {
        box->setMaxLength(design.maxLength);
    }
    box->setEchoMode(design.password ? QLineEdit::Password : QLineEdit::Normal);
    box->setProperty("control", static_cast<int>(design.id));
    box->installEventFilter(this);
    connect(box, &QLineEdit::textEdited, this,
            [this, id = design.id](const QString& text) { emit typed(id, text); });
    return box;
}

QWidget* PanelWidget::makeComboBox(const ControlDesign& design, QWidget* parent) {
    auto* box = new FileTypeBox(parent);
    const auto say = [this, id = design.id](const QString& text) { emit typed(id, text); };
    connect(box->lineEdit(), &QLineEdit::textEdited, this, say);
    connect(box, &QComboBox::textActivated, this, say);
    return box;
}

void PanelWidget::orderTabs() {
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets_) {
        if (widget->focusPolicy() == Qt::NoFocus) {
            continue;
        }
        if (previous != nullptr) {
            setTabOrder(previous, widget);
        }
        previous = widget;
    }
}

// A box is named by the nearest wording before it in its frame, the bar by its frame.
void PanelWidget::nameForAssistiveTechnology() {
    QString wording;
    for (const ControlDesign& design : panelTable()) {
        QWidget* widget = widgetOf(design.id);
        if (design.kind == ControlKind::label || design.kind == ControlKind::frame) {
            const QString own = wordingOfWidget(widget);
            wording = own.isEmpty() ? wording : own;
        } else if (wordingOf(design.kind) == PanelProperty::text) {
            widget->setAccessibleName(wording);
        } else if (design.kind == ControlKind::progressBar) {
            widget->setAccessibleName(wordingOfWidget(widget->parentWidget()));
        }
    }
}

void PanelWidget::setScale(double scale) {
    scale_ = scale;
    setFixedSize(scaledPosition({0, 0, panelWidth, panelHeight}, scale).size());
    setStyleSheet(panelStyleSheet(scale));
    for (const ControlDesign& design : panelTable()) {
        QWidget* widget = widgetOf(design.id);
        setFontThroughout(*widget, panelFont(design.style, scale));
        widget->setGeometry(scaledPosition(design.position, scale));
    }
}

void PanelWidget::follow(const Panel& panel) {
    panel_ = &panel;
    for (const ControlDesign& design : panelTable()) {
        if (design.kind == ControlKind::comboBox) {
            apply(panel, design.id, PanelProperty::items);
        }
        if (const auto wording = wordingOf(design.kind)) {
            apply(panel, design.id, *wording);
        }
        if (design.kind == ControlKind::progressBar) {
            apply(panel, design.id, PanelProperty::value);
        }
        apply(panel, design.id, PanelProperty::enabled);
        apply(panel, design.id, PanelProperty::visible);
    }
}

void PanelWidget::panelWritten(ControlId control, PanelProperty property) {
    if (panel_ != nullptr) {
        apply(*panel_, control, property);
    }
}

void PanelWidget::apply(const Panel& panel, ControlId id, PanelProperty property) {
    const ControlState& state = panel[id];
    switch (property) {
    case PanelProperty::caption:
    case PanelProperty::text:
        applyWording(id, qtText(state.text));
        break;
    case PanelProperty::enabled:
        applyEnabled(id, state.enabled);
        break;
    case PanelProperty::visible:
        widgetOf(id)->setVisible(state.visible);
        break;
    case PanelProperty::value:
        qobject_cast<QProgressBar*>(widgetOf(id))->setValue(state.value);
        break;
    case PanelProperty::items:
        applyItems(id, state);
        break;
    }
}

void PanelWidget::applyWording(ControlId id, const QString& text) {
    QWidget* widget = widgetOf(id);
    if (auto* label = qobject_cast<CaptionLabel*>(widget)) {
        label->setCaption(text);
    } else if (auto* frame = qobject_cast<QGroupBox*>(widget)) {
        frame->setTitle(text);
    } else if (auto* button = qobject_cast<QPushButton*>(widget)) {
        button->setText(unmarked(text));
    } else if (auto* box = qobject_cast<QLineEdit*>(widget)) {
        setTextAndShowItsStart(*box, text);
        updateToolTip(id);
    } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        setTextAndShowItsStart(*combo->lineEdit(), text);
    }
}

// Only ever grows, and leaves the text as it is: the box is editable.
void PanelWidget::applyItems(ControlId id, const ControlState& state) {
    auto* combo = qobject_cast<QComboBox*>(widgetOf(id));
    for (auto index = static_cast<std::size_t>(combo->count()); index < state.items.size(); ++index) {
        combo->addItem(qtText(state.items[index]));
    }
    setTextAndShowItsStart(*combo->lineEdit(), qtText(state.text));
}

void PanelWidget::applyEnabled(ControlId id, bool enabled) {
    QWidget* widget = widgetOf(id);
    if (!enabled && widget->hasFocus()) {
        passFocusOn(widget);
    }
    widget->setEnabled(enabled);
}

// Left to itself the focus would leave the panel when the login fields close behind the operator.
void PanelWidget::passFocusOn(QWidget* from) {
    for (QWidget* next = from->nextInFocusChain(); next != from; next = next->nextInFocusChain()) {
        if (isAncestorOf(next) && next->isEnabled() && next->isVisible() &&
            (next->focusPolicy() & Qt::TabFocus) != 0) {
            next->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

// What a box has no room for can be read in its tool tip.
void PanelWidget::updateToolTip(ControlId id) {
    auto* box = qobject_cast<QLineEdit*>(widgetOf(id));
    const bool fits = box->fontMetrics().horizontalAdvance(box->text()) < box->contentsRect().width();
    const bool secret = box->echoMode() != QLineEdit::Normal;
    box->setToolTip(fits || secret ? qtText(designOf(id).toolTip)
                                   : QStringLiteral("<qt>%1</qt>").arg(box->text().toHtmlEscaped()));
}

bool PanelWidget::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (isEnter(key) && key.isAutoRepeat()) {
            return true; // a key that is held down is pressed once
        }
        emit keyPressed(static_cast<ControlId>(watched->property("control").toInt()),
                        isEnter(key) ? enterKeyCode : key.key(), classicShift(key.modifiers()));
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace quillport
