#include "harness/ScriptedXml.h"

#include "harness/xml_reader.h"

#include <algorithm>

namespace quillport::scenarios {

namespace {

/// Every RTU has this file, so a scenario names it only where it matters.
constexpr std::string_view rtuSetupUrlEnd = "/cs/xml/rtusetup.xml";
constexpr std::string_view emptyRtuSetup = "<RTUSETUP/>";
constexpr std::int32_t parseErrorNumber = 1; // any number but 0 says "failed"

class ScriptedElement : public XmlElement {
public:
    ScriptedElement(const XmlNode& node, Faults& faults) : node_(node), faults_(faults) {}

    [[nodiscard]] std::string name() const override {
        faults_.raiseIfDue("xmlName");
        return node_.name;
    }

    [[nodiscard]] std::vector<std::unique_ptr<XmlElement>> children() const override {
        faults_.raiseIfDue("xmlChildren");
        std::vector<std::unique_ptr<XmlElement>> elements;
        for (const auto& child : node_.children) {
            elements.push_back(std::make_unique<ScriptedElement>(*child, faults_));
        }
        return elements;
    }

    [[nodiscard]] std::string text() const override {
        faults_.raiseIfDue("xmlText");
        return node_.text;
    }

    [[nodiscard]] std::optional<std::string> attribute(const std::string& name) const override {
        faults_.raiseIfDue("xmlAttribute");
        const auto found = std::find_if(node_.attributes.begin(), node_.attributes.end(),
                                        [&](const auto& attribute) { return attribute.first == name; });
        return found == node_.attributes.end() ? std::nullopt : std::optional(found->second);
    }

private:
    const XmlNode& node_;
    Faults& faults_;
};

class ScriptedDocument : public XmlDocument {
public:
    explicit ScriptedDocument(ScriptedXml& platform) : platform_(platform) {}

    void put_ResolveExternals(bool resolve) override { resolve_ = resolve; }
    void put_ValidateOnParse(bool validate) override { validate_ = validate; }
    void put_Async(bool async) override { async_ = async; }

    bool load(const std::string& urlOrPath) override {
        return recorded(platform_.transcript(), "xml", "load", inQuotes(urlOrPath) + settings(),
                        [&](CallLine& line) {
                            platform_.faults().raiseIfDue("xmlLoad");
                            read(platform_.at(urlOrPath));
                            line.gives(root_ == nullptr ? "failed " + inQuotes(reason_) : "ok");
                            return root_ != nullptr;
                        });
    }

    [[nodiscard]] std::int32_t parseErrorCode() const override {
        return reason_.empty() ? 0 : parseErrorNumber;
    }
    [[nodiscard]] std::string parseErrorReason() const override { return reason_; }

    [[nodiscard]] std::unique_ptr<XmlElement> documentElement() const override {
        return root_ == nullptr ? nullptr : std::make_unique<ScriptedElement>(*root_, platform_.faults());
    }

private:
    [[nodiscard]] std::string settings() const {
        return std::string(resolve_ ? " resolve" : "") + (validate_ ? " validate" : "") +
               (async_ ? " async" : "");
    }

    void read(const ScriptedXml::Answer& answer) {
        root_.reset();
        reason_ = answer.reason;
        if (!answer.document) {
            return;
        }
        try {
            root_ = readXml(*answer.document);
        } catch (const XmlReadError& error) {
            reason_ = error.what();
        }
    }

    ScriptedXml& platform_;
    std::unique_ptr<XmlNode> root_;
    std::string reason_;
    bool resolve_ = false;
    bool validate_ = false;
    bool async_ = false;
};

bool isUrl(const std::string& place) {
    return place.find("://") != std::string::npos;
}

} // namespace

void ScriptedXml::give(const std::string& place, std::string document) {
    answers_[place] = {.document = std::move(document), .reason = {}};
}

void ScriptedXml::giveFailure(const std::string& place, std::string reason) {
    answers_[place] = {.document = std::nullopt, .reason = std::move(reason)};
}

std::unique_ptr<XmlDocument> ScriptedXml::createDocument() {
    try {
        faults_.raiseIfDue("createDocument");
    } catch (const Failure& failure) {
        transcript_.write("xml", "createDocument -> raises " + failureText(failure));
        throw;
    }
    return std::make_unique<ScriptedDocument>(*this);
}

ScriptedXml::Answer ScriptedXml::at(const std::string& place) {
    const bool isThere = isUrl(place) || disk_.files.findFile(disk_.absolute(place)) != nullptr;
    const std::string key = isUrl(place) ? place : disk_.files.spelled(disk_.absolute(place));
    const auto found = answers_.find(key);
    if (isThere && found != answers_.end()) {
        return found->second;
    }
    if (place.ends_with(rtuSetupUrlEnd)) {
        return {.document = std::string(emptyRtuSetup), .reason = {}};
    }
    return {.document = std::nullopt, .reason = "The document cannot be loaded."};
}

} // namespace quillport::scenarios
