#include "libexec/proc/ChildAnswer.h"

#include "libexec/proc/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace tidewick::libexec
{
namespace
{

constexpr int64_t longestMs = 500;
constexpr int64_t longestOfAllMs = 1000;

int64_t nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

/// Adds what the descriptor gives, to its end. False where that is not reached in time.
bool readUntil(int64_t deadline, int descriptor, std::string &text)
{
    std::array<char, 16384> buffer;
    for (;;) {
        pollfd waiting{descriptor, POLLIN, 0};
        const auto left = std::max<int64_t>(deadline - nowMs(), 0);
        const int count = poll(&waiting, 1, int(left));
        if (count < 0 && errno == EINTR)
            continue;
        const ssize_t size = count > 0 ? read(descriptor, buffer.data(), buffer.size()) : -1;
        if (size <= 0)
            return size == 0;
        text.append(buffer.data(), size_t(size));
    }
}

/// Closes all descriptors but these two. A negative number is none.
void closeAllBut(int one, int other)
{
    unsigned next = 0;
    for (const int kept : {std::min(one, other), std::max(one, other)}) {
        if (kept < 0)
            continue;
        if (unsigned(kept) > next)
            close_range(next, unsigned(kept - 1), 0);
        next = unsigned(kept + 1);
    }
    close_range(next, ~0U, 0);
}

} // namespace

std::optional<std::string> askChild(const std::function<std::string()> &ask, int needed)
{
    static int64_t leftMs = longestOfAllMs;
    std::array<int, 2> ends{};
    if (leftMs <= 0 || pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    const Descriptor output(ends[0]);
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        closeAllBut(ends[1], needed);
        _exit(writeAll(ends[1], ask()) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    close(ends[1]);
    if (child < 0)
        return std::nullopt;
    const int64_t start = nowMs();
    std::string text;
    const bool isWhole = readUntil(start + std::min(longestMs, leftMs), output.value(), text);
    leftMs -= nowMs() - start;
    int status = -1;
    if (!isWhole) {
        // It may have to wait until it can end; nobody waits for it.
        kill(child, SIGKILL);
        return std::nullopt;
    }
    if (waitpid(child, &status, 0) != child || status != 0)
        return std::nullopt;
    return text;
}

} // namespace tidewick::libexec
