#pragma once

#include "control/panel.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillport {

enum class HandResult : std::uint8_t;

/// The control as a hosting page and an operator see it: what a session drives.
class ControlSurface {
public:
    ControlSurface() = default;
    ControlSurface(const ControlSurface&) = delete;
    ControlSurface& operator=(const ControlSurface&) = delete;
    virtual ~ControlSurface() = default;

    virtual void Connect() = 0;
    virtual void Disconnect() = 0;
    virtual std::string get_HostName() = 0;
    virtual void put_HostName(const std::string& hostName) = 0;
    virtual void put_partNumber(const std::string& partNumber) = 0;
    virtual std::vector<std::string> GetFiles(const std::string& filespec, std::int32_t attributes) = 0;

    virtual HandResult click(ControlId control) = 0;
    virtual HandResult doubleClick(ControlId control) = 0;
    virtual HandResult keyDown(ControlId control, std::int32_t keyCode) = 0;
    virtual HandResult type(ControlId control, std::string_view text) = 0;

    virtual const Panel& panel() = 0;
};

} // namespace quillport
