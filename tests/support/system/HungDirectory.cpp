#include "tests/support/system/HungDirectory.h"

#include "tests/support/system/Namespaces.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <linux/fuse.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace
{

constexpr unsigned longestLife = 120; // seconds

void answerToInit(int device, const fuse_in_header &request)
{
    struct
    {
        fuse_out_header header;
        fuse_init_out body;
    } answer{};
    answer.header = {sizeof answer, 0, request.unique};
    answer.body.major = FUSE_KERNEL_VERSION;
    answer.body.minor = FUSE_KERNEL_MINOR_VERSION;
    answer.body.max_write = 4096;
    [[maybe_unused]] const ssize_t written = write(device, &answer, sizeof answer);
}

/// Takes every request, so that nobody who asked can be killed any more. Holds no descriptor but
/// the device: whoever waits for the end of the test program's output does not wait for this
/// process.
[[noreturn]] void takeRequests(int opened, pid_t parent)
{
    constexpr int device = 0;
    dup2(opened, device);
    close_range(device + 1, ~0U, 0);
    alarm(longestLife);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(0); // it ended before it could be watched
    alignas(fuse_in_header) std::array<char, 1 << 17> request{};
    for (;;) {
        const ssize_t size = read(device, request.data(), request.size());
        const auto &header = *reinterpret_cast<const fuse_in_header *>(request.data());
        if (size > 0 && header.opcode == FUSE_INIT)
            answerToInit(device, header);
        else if (size < 0 && errno != EINTR && errno != ENOENT)
            _exit(0);
    }
}

} // namespace

QString mountHungDirectory()
{
    const char *const directory = "/mnt"; // elsewhere it stays as it is
    const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (device < 0 || !enterNamespaces(CLONE_NEWNS))
        return {};
    const std::string options = "fd=" + std::to_string(device) +
                                ",rootmode=40000,user_id=" + std::to_string(geteuid()) +
                                ",group_id=" + std::to_string(getegid());
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("hung", directory, "fuse", MS_NOSUID | MS_NODEV, options.c_str()) != 0)
        return {};
    const pid_t parent = getpid();
    if (fork() == 0)
        takeRequests(device, parent);
    close(device);
    return QString::fromLatin1(directory);
}
