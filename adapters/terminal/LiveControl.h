#pragma once

#include "control/QuillportControl.h"
#include "terminal/ControlSurface.h"

namespace quillport {

/// The place where the one control of the program stands. It is there before the control is, because the
/// control writes to its panel while it is being made, and who is told of these writes wants to see them.
class LiveControl final : public ControlSurface {
public:
    LiveControl() {}
    ~LiveControl() override;

    /// Makes the control. Once.
    void make(ControlSite site);

    void Connect() override { control_.Connect(); }
    void Disconnect() override { control_.Disconnect(); }
    std::string get_HostName() override { return control_.get_HostName(); }
    void put_HostName(const std::string& hostName) override { control_.put_HostName(hostName); }
    void put_partNumber(const std::string& partNumber) override { control_.put_partNumber(partNumber); }
    std::vector<std::string> GetFiles(const std::string& filespec, std::int32_t attributes) override {
        return control_.GetFiles(filespec, attributes);
    }
    HandResult click(ControlId control) override { return control_.click(control); }
    HandResult doubleClick(ControlId control) override { return control_.doubleClick(control); }
    HandResult keyDown(ControlId control, std::int32_t keyCode) override {
        constexpr std::int32_t noShift = 0;
        return control_.keyDown(control, keyCode, noShift);
    }
    HandResult type(ControlId control, std::string_view text) override {
        return control_.type(control, text);
    }
    const Panel& panel() override { return control_.panel(); }

private:
    union {
        QuillportControl control_;
    };
    bool made_ = false;
};

} // namespace quillport
