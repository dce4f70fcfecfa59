// What the supplied tools cost against the stock ones and ss, in one run: tools_bench DIRECTORY
// [PROCESSES...] measures those in DIRECTORY beside 160 listeners, with that many more processes.
// The bare walk is the least that a lister must do: it reads the link of each descriptor.
#include "tests/libexec/OddProcess.h"
#include "tests/support/system/SharedDirectory.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int runs = 11;
using Command = std::vector<std::string>;

/// Reads the link of each descriptor of each process that allows it, and keeps none of it.
void walk()
{
    DIR *const processes = opendir("/proc");
    std::array<char, 64> target{};
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream is this thread's own
    while (const dirent *const process = readdir(processes)) {
        if (process->d_name[0] < '1' || process->d_name[0] > '9')
            continue;
        const int all = dirfd(processes);
        const std::string path = std::string(process->d_name) + "/fd";
        const int descriptor = openat(all, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        DIR *const descriptors = descriptor < 0 ? nullptr : fdopendir(descriptor);
        if (descriptors == nullptr)
            continue;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the same
        while (const dirent *const each = readdir(descriptors)) {
            // What it reads is of no interest.
            [[maybe_unused]] const ssize_t length =
                readlinkat(descriptor, each->d_name, target.data(), target.size());
        }
        closedir(descriptors);
    }
    closedir(processes);
}

/// Runs walk() in a child process, as the other commands run.
const Command bareWalk;

double measureWalk()
{
    QElapsedTimer timer;
    timer.start();
    const pid_t pid = fork();
    if (pid == 0) {
        walk();
        _exit(EXIT_SUCCESS);
    }
    waitpid(pid, nullptr, 0);
    return double(timer.nsecsElapsed()) / 1e6;
}

/// How long one run takes, in milliseconds.
double measure(Command command)
{
    if (command == bareWalk)
        return measureWalk();
    std::vector<char *> arguments;
    for (std::string &word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    QElapsedTimer timer;
    timer.start();
    pid_t pid = -1;
    if (posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ) == 0)
        waitpid(pid, nullptr, 0);
    const double time = double(timer.nsecsElapsed()) / 1e6;
    posix_spawn_file_actions_destroy(&actions);
    return time;
}

/// The median of each command's times; they take turns, so that what else goes on meets them all.
std::vector<double> medians(const std::vector<Command> &commands)
{
    std::vector<std::vector<double>> times(commands.size());
    for (int run = 0; run < runs; ++run) {
        for (size_t i = 0; i < commands.size(); ++i)
            times[i].push_back(measure(commands[i]));
    }
    std::vector<double> list;
    for (std::vector<double> &each : times) {
        std::sort(each.begin(), each.end());
        list.push_back(each[runs / 2]);
    }
    return list;
}

void compare(const std::string &load, const std::string &directory)
{
    const Command sockets{"-i", "TCP", "-P", "-n", "-sTCP:LISTEN"};
    Command supplied{directory + "/lsof"};
    Command stock{"/usr/bin/lsof"};
    supplied.insert(supplied.end(), sockets.begin(), sockets.end());
    stock.insert(stock.end(), sockets.begin(), sockets.end());
    const auto lister = medians({supplied, stock, {"/usr/bin/ss", "-Hltnp"}, bareWalk});
    std::printf("%-34s %-10s %9.2f %9.2f %9.2f %9.2f %9.2f %9.2f %9.2f\n", load.c_str(), "sockets",
                lister[0], lister[1], lister[0] / lister[1], lister[2], lister[0] / lister[2],
                lister[3], lister[0] / lister[3]);
    const std::string pid = std::to_string(getpid());
    for (const char *const format : {"command=", "rss=,%cpu=", "etime="}) {
        const auto query = medians(
            {{directory + "/ps", "-p", pid, "-o", format}, {"/bin/ps", "-p", pid, "-o", format}});
        std::printf("%-34s %-10s %9.2f %9.2f %9.2f\n", "", format, query[0], query[1],
                    query[0] / query[1]);
    }
    const Command workingDirectory{"-p", pid, "-a", "-d", "cwd", "-F", "n"};
    supplied = {directory + "/lsof"};
    stock = {"/usr/bin/lsof"};
    supplied.insert(supplied.end(), workingDirectory.begin(), workingDirectory.end());
    stock.insert(stock.end(), workingDirectory.begin(), workingDirectory.end());
    const auto query = medians({supplied, stock});
    std::printf("%-34s %-10s %9.2f %9.2f %9.2f\n", "", "cwd", query[0], query[1],
                query[0] / query[1]);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2)
        return EXIT_FAILURE;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    std::printf(
        "user %u, ms, medians of %d runs in turns\n%-34s %-10s %9s %9s %9s %9s %9s %9s %9s\n",
        getuid(), runs, "beside 160 listeners", "", "supplied", "stock", "ratio", "ss", "ratio",
        "bare walk", "ratio");
    const SharedDirectory directory;
    const OddProcess servers({"servers 160", {"node"}, directory.copy(oddProgram(), "node")});
    compare("no more", argv[1]);
    for (int i = 2; i < argc; ++i) {
        const OddProcess crowd({std::string("idle ") + argv[i], {"crowd"}});
        compare(std::string(argv[i]) + " more processes", argv[1]);
    }
    std::vector<std::unique_ptr<OddProcess>> hoarders;
    int descriptors = 0;
    for (int i = 0; i < 3; ++i) {
        hoarders.push_back(std::make_unique<OddProcess>(
            OddProcess::Settings{"listen 127.0.0.1|fds 16667", {"hoarder"}}));
        descriptors += hoarders.back()->port(1);
    }
    compare(std::to_string(descriptors) + " descriptors in 3 processes", argv[1]);
    return EXIT_SUCCESS;
}
