#include "terminal/LiveControl.h"

#include <memory>
#include <utility>

namespace quillport {

LiveControl::~LiveControl() {
    if (made_) {
        std::destroy_at(&control_);
    }
}

void LiveControl::make(ControlSite site) {
    std::construct_at(&control_, std::move(site));
    made_ = true;
}

} // namespace quillport
