#include "terminal/TerminalPump.h"

#include "terminal/StopSignals.h"

namespace quillport {

void TerminalPump::serve(std::chrono::milliseconds atMost) {
    const int woken[] = {wakes_.descriptor()};
    if (signals_.waitForInput(woken, atMost)) {
        wakes_.drain();
    }
}

} // namespace quillport
