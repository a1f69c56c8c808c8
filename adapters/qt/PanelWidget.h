#pragma once

#include "control/panel.h"

#include <QWidget>

#include <array>

namespace quillport {

/// The panel of a control as widgets, built from the panel's table. Each widget's objectName is the control's
/// name. It shows what the followed panel holds and says what the operator does; it decides nothing.
///
/// It is made anew for each control.
class PanelWidget final : public QWidget, public PanelListener {
    Q_OBJECT

public:
    /// Shows the table's design texts until it follows a panel.
    explicit PanelWidget(double scale, QWidget* parent = nullptr);

    /// Shows a panel as it stands, and from then on every write that is told of. The panel outlives this
    /// widget or its successor's first call.
    void follow(const Panel& panel);

    /// 1 is normal size. Everything is laid out anew in the new size, fonts included.
    void setScale(double scale);
    [[nodiscard]] double scale() const { return scale_; }

    [[nodiscard]] QWidget* widgetOf(ControlId id) const { return widgets_[static_cast<std::size_t>(id)]; }

    void panelWritten(ControlId control, PanelProperty property) override;

signals:
    void clicked(quillport::ControlId control);
    void doubleClicked(quillport::ControlId control);
    /// The classic code of the key (13 for Enter) and the classic shift state (1 Shift, 2 Ctrl, 4 Alt).
    void keyPressed(quillport::ControlId control, int keyCode, int shift);
    void typed(quillport::ControlId control, const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QWidget* makeWidget(const ControlDesign& design, QWidget* parent);
    [[nodiscard]] QWidget* makeLabel(const ControlDesign& design, QWidget* parent);
    [[nodiscard]] QWidget* makeButton(const ControlDesign& design, QWidget* parent);
    [[nodiscard]] QWidget* makeTextBox(const ControlDesign& design, QWidget* parent);
    [[nodiscard]] QWidget* makeComboBox(const ControlDesign& design, QWidget* parent);
    void orderTabs();
    void nameForAssistiveTechnology();

    void apply(const Panel& panel, ControlId id, PanelProperty property);
    void applyWording(ControlId id, const QString& text);
    void applyItems(ControlId id, const ControlState& state);
    void applyEnabled(ControlId id, bool enabled);
    void passFocusOn(QWidget* from);
    void updateToolTip(ControlId id);

    const Panel* panel_ = nullptr;
    double scale_;
    std::array<QWidget*, controlCount> widgets_{};
};

} // namespace quillport
