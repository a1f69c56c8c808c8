#pragma once

#include "harness/words.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillport::scenarios {

/// Verbs of the transcript, each with what it stands for.
struct TranscriptVerb {
    std::string_view name;
    bool shownByDefault;
};
[[nodiscard]] std::span<const TranscriptVerb> transcriptVerbs();
[[nodiscard]] std::vector<std::string> transcriptVerbNames();

/// `verb     text`, with the texts of all lines in one column.
[[nodiscard]] std::string transcriptLine(std::string_view verb, std::string_view text);
/// The same for a line written by hand: only the blanks behind its verb are evened out.
[[nodiscard]] std::string evenedLine(std::string_view line);

/// What happened, in one order over all scripted parts of the host.
class Transcript {
public:
    /// Is told of each line as it is written, before anything else happens.
    using Observer = std::function<void(const std::string& line)>;
    struct Entry {
        std::string verb;
        std::string text;
        bool muted = false;
    };

    void setObserver(Observer observer) { observer_ = std::move(observer); }
    /// Lines written while muted are never shown.
    void mute(bool muted) { muted_ = muted; }
    [[nodiscard]] bool muted() const { return muted_; }

    /// Writes a line and gives its place.
    std::size_t write(std::string_view verb, std::string text);
    /// Tells what a line's call came to: behind the line itself, or in a line of its own when others have
    /// been written since.
    void finish(std::size_t place, std::string_view name, const std::string& outcome);
    void append(std::size_t place, const std::string& text) { entries_[place].text += text; }

    [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }

private:
    std::vector<Entry> entries_;
    Observer observer_;
    bool muted_ = false;
};

/// The line of a running call.
class CallLine {
public:
    CallLine(Transcript& transcript, std::string_view verb, std::string name, const std::string& arguments)
        : transcript_(transcript), name_(std::move(name)),
          place_(transcript.write(verb, arguments.empty() ? name_ : name_ + " " + arguments)) {}

    void gives(const std::string& result) { transcript_.finish(place_, name_, result); }

private:
    Transcript& transcript_;
    std::string name_;
    std::size_t place_;
};

/// Runs a call's work between its line and what it came to: a failure is shown here, a result is the work's
/// own to show.
template <typename Work>
auto recorded(Transcript& transcript, std::string_view verb, const std::string& name,
              const std::string& arguments, Work&& work) {
    CallLine line(transcript, verb, name, arguments);
    try {
        return std::forward<Work>(work)(line);
    } catch (const Failure& failure) {
        line.gives("raises " + failureText(failure));
        throw;
    }
}

} // namespace quillport::scenarios
