#pragma once

#include "platform/CommonDialog.h"
#include "platform/Prompt.h"
#include "terminal/ControlSurface.h"
#include "terminal/FtpObserver.h"
#include "terminal/session_action.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <deque>
#include <iosfwd>
#include <list>
#include <string_view>

namespace quillport {

enum class Trace { no, yes };

/// A session drives the control by actions and writes every effect as a JSON line, flushed at once: the
/// panel's writes, prompts and pickers, which it answers from its queues, and with tracing the FTP client's
/// calls and events. The protocol is told in docs/session.md. Everything happens on the control's thread.
///
/// When the output is lost, whatever runs ends with OutputLost.
class Session final : public PanelListener, public Prompter, public PickerDialog, public FtpObserver {
public:
    /// The control may be made after the session, which is told of the writes meanwhile.
    Session(ControlSurface& control, std::ostream& output, Trace trace)
        : control_(control), output_(output), trace_(trace) {}

    /// Carries out the next action and says so.
    void perform(const SessionLine& line);

    void panelWritten(ControlId control, PanelProperty property) override;
    Button show(const Prompt& prompt) override;
    std::optional<std::string> pick(const PickerRequest& request) override;
    void callReturned(std::string_view name, FtpArguments arguments, const Failure* failure) override;
    void eventDelivered(std::string_view name, FtpArguments arguments) override;
    void fileStarted(const FileStart& /*file*/) override {}

private:
    /// Carries out an action on its own or inside a running call. A failure that leaves the control is shown,
    /// as any host shows it, and goes no further.
    void carryOut(const Action& action);

    void carry(const SetProperty& action);
    void carry(const GetHostName& action);
    void carry(const CallConnect& action);
    void carry(const CallDisconnect& action);
    void carry(const CallGetFiles& action);
    void carry(const TypeText& action);
    void carry(const Click& action);
    void carry(const DoubleClick& action);
    void carry(const PressKey& action);
    void carry(const QueuePick& action);
    void carry(const QueueAnswer& action);
    void carry(const ShowPanel& action);

    void noteIfIgnored(HandResult result, std::string_view action, ControlId control);
    [[nodiscard]] Button nextAnswer(const Prompt& prompt);
    /// Takes out those that wait for this write.
    std::list<SessionLine> takeTriggered(ControlId control, PanelProperty property);
    void write(const nlohmann::ordered_json& effect);

    ControlSurface& control_;
    std::ostream& output_;
    Trace trace_;
    std::size_t actions_ = 0;
    std::list<SessionLine> waiting_;
    std::deque<QueuePick> picks_;
    std::list<QueueAnswer> answers_;
};

} // namespace quillport
