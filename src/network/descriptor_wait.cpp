// Waits for a descriptor until a deadline.

#include "network/descriptor_wait.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <poll.h>

namespace {

using Clock = std::chrono::steady_clock;

// In the unit of poll, rounded up so that no wait ends early.
int Milliseconds_To(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

} // namespace

Descriptor_Wait Wait_For(int descriptor, short event, int seconds) {
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(seconds);
    for (;;) {
        const int left = seconds == 0 ? -1 : Milliseconds_To(deadline);
        if (left == 0)
            return Descriptor_Wait::TIMED_OUT;
        pollfd waiting{descriptor, event, 0};
        const int count = poll(&waiting, 1, left);
        if (count > 0)
            return waiting.revents & (event | POLLERR | POLLHUP) ? Descriptor_Wait::READY
                                                                 : Descriptor_Wait::NOT_READY;
        if (count < 0 && errno != EINTR)
            return Descriptor_Wait::FAILED;
    }
}
