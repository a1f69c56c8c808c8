#pragma once

#include "control/QuillportControl.h"
#include "harness/words.h"

#include <functional>
#include <list>
#include <map>
#include <string>
#include <variant>

namespace quillport::scenarios {

/// The control with its protected members open to scenarios. Its tables are the one place to extend when the
/// control gains a procedure or a member that scenarios should reach by name.
class ControlUnderTest : public QuillportControl {
public:
    using QuillportControl::QuillportControl;

    /// Takes its arguments from the words of a line, runs, and gives the text of the result; empty for none.
    using Procedure = std::function<std::string(ControlUnderTest& control, Words& words)>;
    [[nodiscard]] static const std::map<std::string, Procedure>& procedures();

    using Member = std::variant<std::string QuillportControl::*, bool QuillportControl::*,
                                std::int16_t QuillportControl::*, std::int32_t QuillportControl::*>;
    [[nodiscard]] static const std::map<std::string, Member>& members();

    [[nodiscard]] std::int32_t pendingNumber() const { return error_.Number(); }
    void makePending(const Failure& failure) { error_.record(failure); }

    /// The records of the running transfer; none where the control has no collection.
    [[nodiscard]] const std::list<cXferFileInfo>& records() const;
    /// Appends one, to a new collection where there is none.
    void addRecord(cXferFileInfo record);
};

/// The same for the operations of the client, as the control would call them.
using ClientOperation = std::function<void(FtpClient& client, Words& words)>;
[[nodiscard]] const std::map<std::string, ClientOperation>& clientOperations();

/// The member's value as a line of a scenario has it.
[[nodiscard]] std::string memberText(const ControlUnderTest& control, const ControlUnderTest::Member& member);
void setMember(ControlUnderTest& control, const ControlUnderTest::Member& member, Words& words);
/// `["", "a.out"]`; of a long list the first names, the last one and the count.
[[nodiscard]] std::string namesText(const std::vector<std::string>& names);

/// `2024-03-01` or `2024-03-01T10:20:30`
[[nodiscard]] DateTime readDate(const std::string& text);

} // namespace quillport::scenarios
