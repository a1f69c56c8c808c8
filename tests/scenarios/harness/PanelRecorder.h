#pragma once

#include "control/panel.h"
#include "harness/Faults.h"
#include "harness/Transcript.h"

#include <vector>

namespace quillport::scenarios {

/// Writes every panel write into the transcript. A failure may be planned for the writes of one control, by
/// its name.
class PanelRecorder : public PanelListener {
public:
    PanelRecorder(Transcript& transcript, Faults& faults) : transcript_(transcript), faults_(faults) {}

    void panelWritten(ControlId control, PanelProperty property) override;

    /// The panel to read from. Writes made before, while the control is being made, get their values now.
    void watch(const Panel& panel);

private:
    struct Unread {
        std::size_t place;
        ControlId control;
        PanelProperty property;
        std::size_t itemCount;
    };

    Transcript& transcript_;
    Faults& faults_;
    const Panel* panel_ = nullptr;
    std::vector<Unread> unread_;
    std::size_t itemsUnread_ = 0;
};

/// The value as transcripts and end states have it; of items the last of the first `itemCount`.
[[nodiscard]] std::string panelValueText(const ControlState& state, PanelProperty property,
                                         std::size_t itemCount);

} // namespace quillport::scenarios
