#pragma once

#include "platform/failure.h"

namespace quillport {

/// The object behind a reference; raises failure_number::objectNotSet when there is none.
template <typename Reference>
[[nodiscard]] auto& object(const Reference& reference) {
    if (!reference) {
        throw Failure(failure_number::objectNotSet, "Object variable or With block variable not set");
    }
    return *reference;
}

} // namespace quillport
