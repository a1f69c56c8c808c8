#pragma once

#include "harness/Faults.h"
#include "harness/Rtu.h"
#include "harness/Transcript.h"
#include "platform/XmlDocument.h"

#include <map>
#include <optional>
#include <string>

namespace quillport::scenarios {

/// The documents of a scenario, by URL or local path.
class ScriptedXml : public XmlPlatform {
public:
    ScriptedXml(LocalDisk& disk, Transcript& transcript, Faults& faults)
        : disk_(disk), transcript_(transcript), faults_(faults) {}

    void give(const std::string& place, std::string document);
    void giveFailure(const std::string& place, std::string reason);

    std::unique_ptr<XmlDocument> createDocument() override;

    /// What a place holds: a document's text, or the reason why there is none.
    struct Answer {
        std::optional<std::string> document;
        std::string reason;
    };
    [[nodiscard]] Answer at(const std::string& place);
    [[nodiscard]] Transcript& transcript() { return transcript_; }
    [[nodiscard]] Faults& faults() { return faults_; }

private:
    LocalDisk& disk_;
    Transcript& transcript_;
    Faults& faults_;
    std::map<std::string, Answer> answers_;
};

} // namespace quillport::scenarios
