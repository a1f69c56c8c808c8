#include "harness/Transcript.h"

#include <array>

namespace quillport::scenarios {

namespace {

constexpr std::array<TranscriptVerb, 18> verbs{{
    {"client", true},
    {"event", true},
    {"caption", true},
    {"text", true},
    {"enabled", true},
    {"visible", true},
    {"value", true},
    {"items", true},
    {"prompt", true},
    {"picker", true},
    {"files", true},
    {"asked", false}, // what only looks at local files: most of it repeats what the effects show
    {"host", true},
    {"xml", true},
    {"result", true},
    {"failure", true},
    {"ignored", true},
    {"now", true},
}};

constexpr std::size_t verbWidth = 8;

} // namespace

std::span<const TranscriptVerb> transcriptVerbs() {
    return verbs;
}

std::vector<std::string> transcriptVerbNames() {
    std::vector<std::string> names;
    for (const TranscriptVerb& verb : verbs) {
        names.emplace_back(verb.name);
    }
    return names;
}

std::string transcriptLine(std::string_view verb, std::string_view text) {
    std::string line(verb);
    line.resize(std::max(verb.size(), verbWidth), ' ');
    return trimmed(line + " " + std::string(text));
}

std::string evenedLine(std::string_view line) {
    const std::string whole = trimmed(line);
    const std::size_t blank = whole.find_first_of(" \t");
    if (blank == std::string::npos) {
        return transcriptLine(whole, "");
    }
    return transcriptLine(whole.substr(0, blank), trimmed(whole.substr(blank)));
}

std::size_t Transcript::write(std::string_view verb, std::string text) {
    const std::size_t place = entries_.size();
    entries_.push_back({.verb = std::string(verb), .text = std::move(text), .muted = muted_});
    if (observer_) {
        observer_(transcriptLine(verb, std::string(entries_[place].text)));
    }
    return place;
}

void Transcript::finish(std::size_t place, std::string_view name, const std::string& outcome) {
    if (place + 1 == entries_.size()) {
        append(place, " -> " + outcome);
        return;
    }
    entries_.push_back({.verb = entries_[place].verb,
                        .text = std::string(name) + (name.empty() ? "-> " : " -> ") + outcome,
                        .muted = entries_[place].muted});
}

} // namespace quillport::scenarios
