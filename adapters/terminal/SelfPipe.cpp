#include "terminal/SelfPipe.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace quillport {

SelfPipe::SelfPipe() : ends_{-1, -1} {
    if (pipe(ends_) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    for (const int end : ends_) {
        fcntl(end, F_SETFL, O_NONBLOCK);
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
}

SelfPipe::~SelfPipe() {
    close(ends_[0]);
    close(ends_[1]);
}

void SelfPipe::knock() const noexcept {
    const int found = errno;
    // A full pipe holds knocks enough.
    [[maybe_unused]] const auto written = write(ends_[1], "!", 1);
    errno = found;
}

void SelfPipe::drain() const noexcept {
    char knocks[256];
    while (read(ends_[0], knocks, sizeof knocks) == static_cast<ssize_t>(sizeof knocks)) {
    }
}

} // namespace quillport
