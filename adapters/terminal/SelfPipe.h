#pragma once

namespace quillport {

/// A pipe to oneself: what makes a poll() return from another thread or from a signal handler.
class SelfPipe {
public:
    /// Raises std::system_error when the process has no descriptors left.
    SelfPipe();
    ~SelfPipe();
    SelfPipe(const SelfPipe&) = delete;
    SelfPipe& operator=(const SelfPipe&) = delete;

    /// Readable from a knock() until the next drain().
    [[nodiscard]] int descriptor() const noexcept { return ends_[0]; }
    /// Any thread may call it, and so may a signal handler.
    void knock() const noexcept;
    void drain() const noexcept;

private:
    int ends_[2];
};

} // namespace quillport
