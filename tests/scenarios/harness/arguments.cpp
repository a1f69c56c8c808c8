#include "harness/arguments.h"

#include "platform/FileSystem.h"

#include <array>
#include <charconv>

namespace quillport::scenarios {

namespace {

struct AttributeName {
    std::string_view name;
    std::int32_t bit;
};

constexpr std::array<AttributeName, 3> attributeNames{{{"readonly", file_attribute::readOnly},
                                                       {"hidden", file_attribute::hidden},
                                                       {"system", file_attribute::system}}};

} // namespace

std::string takeRemotePath(Words& words) {
    std::string path = words.take("a path on the RTU");
    if (!path.starts_with('/')) {
        throw LineError("a path on the RTU starts with \"/\": " + inQuotes(path));
    }
    return path;
}

std::string takeLocalPath(Words& words) {
    std::string path = words.take("a local path");
    if (!path.starts_with('\\')) {
        throw LineError("a local path starts with \"\\\": " + inQuotes(path));
    }
    return path;
}

std::int64_t takeSize(Words& words) {
    const std::string text = words.take("a size");
    std::int64_t size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (error != std::errc() || end != text.data() + text.size() || size < 0) {
        throw LineError(inQuotes(text) + " is no size");
    }
    return size;
}

std::int32_t takeAttributes(Words& words) {
    std::int32_t attributes = 0;
    for (const auto& [name, bit] : attributeNames) {
        attributes |= words.takeIf(name) ? bit : 0;
    }
    words.expectEnd();
    return attributes;
}

std::string attributesText(std::int32_t attributes) {
    std::string text;
    for (const auto& [name, bit] : attributeNames) {
        if ((attributes & bit) != 0) {
            text += " " + std::string(name);
        }
    }
    return text;
}

ControlId takeControl(Words& words) {
    const std::string name = words.take("a control of the panel");
    const auto control = controlNamed(name);
    if (!control) {
        std::vector<std::string> names;
        for (const ControlDesign& design : panelTable()) {
            names.emplace_back(design.name);
        }
        throw LineError(unknownText(name, names));
    }
    return *control;
}

Failure takeFailure(Words& words) {
    const std::int32_t number = words.takeNumber("the failure's number");
    const std::string description = words.take("the failure's description");
    words.expectEnd();
    if (number == 0) {
        throw LineError("0 is no failure's number");
    }
    return {number, description};
}

ControlUnderTest::Member takeMember(Words& words) {
    const std::string name = words.take("a member of the control");
    const auto& members = ControlUnderTest::members();
    const auto found = members.find(name);
    if (found == members.end()) {
        std::vector<std::string> names;
        for (const auto& entry : members) {
            names.push_back(entry.first);
        }
        throw LineError(unknownText(name, names));
    }
    return found->second;
}

} // namespace quillport::scenarios
