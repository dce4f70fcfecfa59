#include "tests/libexec/OddProcess.h"

#include "tests/support/system/SharedDirectory.h"
#include "tests/support/system/Users.h"

#include <QElapsedTimer>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int timeoutMs = 30'000;

std::vector<char *> pointers(std::vector<std::string> &texts)
{
    std::vector<char *> list;
    list.reserve(texts.size() + 1);
    for (std::string &text : texts)
        list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

/// Starts a child whose output and errors go to the descriptors given.
pid_t start(int executable, const std::string &program, std::vector<std::string> arguments,
            std::vector<std::string> environment, const BeforeExec &before,
            const std::string &directory, int output, int errors)
{
    const auto argumentList = pointers(arguments);
    const auto environmentList = pointers(environment);
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    const int input = open("/dev/null", O_RDONLY);
    if (dup2(input, STDIN_FILENO) < 0 || dup2(output, STDOUT_FILENO) < 0 ||
        (errors >= 0 && dup2(errors, STDERR_FILENO) < 0) ||
        (!directory.empty() && chdir(directory.c_str()) != 0) || (before && !before()))
        _exit(126);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (executable >= 0)
        fexecve(executable, argumentList.data(), environmentList.data());
    execve(program.c_str(), argumentList.data(), environmentList.data());
    _exit(127);
}

/// The locale, and the mistake that scripts/mutants has chosen.
std::vector<std::string> environmentOf(const char *locale)
{
    std::vector<std::string> environment{std::string("LC_ALL=") + locale};
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment
    if (const char *mistake = std::getenv("TIDEWICK_MISTAKE"))
        environment.push_back(std::string("TIDEWICK_MISTAKE=") + mistake);
    return environment;
}

std::string readAll(int descriptor)
{
    std::string text;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return text;
        text.append(buffer.data(), size_t(count));
    }
}

} // namespace

const std::string &oddProgram()
{
    static const SharedDirectory directory;
    static const std::string path = directory.copy(ODD_PROCESS);
    return path;
}

BeforeExec asUser(uid_t user)
{
    return [isChanged = user != 0 && isRealRoot(), user] {
        return !isChanged || (setgroups(0, nullptr) == 0 && setgid(user) == 0 && setuid(user) == 0);
    };
}

Output runProgram(const std::string &program, const std::vector<std::string> &arguments,
                  const BeforeExec &before, const char *locale)
{
    std::array<int, 2> output{};
    FILE *const errors = tmpfile();
    if (errors == nullptr || pipe2(output.data(), O_CLOEXEC) != 0)
        return {};
    std::vector<std::string> list{program};
    list.insert(list.end(), arguments.begin(), arguments.end());
    const pid_t pid =
        start(-1, program, list, environmentOf(locale), before, {}, output[1], fileno(errors));
    close(output[1]);
    Output result;
    result.text = readAll(output[0]);
    close(output[0]);
    int status = -1;
    if (pid < 0)
        result.errors = "no process can be started";
    else if (waitpid(pid, &status, 0) == pid && WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    rewind(errors);
    result.errors += readAll(fileno(errors));
    if (fclose(errors) != 0)
        result.status = -1;
    return result;
}

OddProcess::OddProcess(const Settings &settings)
{
    std::array<int, 2> output{};
    if (pipe2(output.data(), O_CLOEXEC) != 0)
        return;
    const std::string program = settings.executable.empty() ? oddProgram() : settings.executable;
    m_pid = start(settings.executableDescriptor, program, settings.arguments,
                  {"ODD=" + settings.script}, settings.before, settings.directory, output[1], -1);
    close(output[1]);
    m_output = output[0];
    QElapsedTimer timer;
    timer.start();
    std::string line;
    while (timer.elapsed() < timeoutMs) {
        pollfd waiting{m_output, POLLIN, 0};
        char byte = 0;
        if (poll(&waiting, 1, 100) <= 0)
            continue;
        if (read(m_output, &byte, 1) != 1)
            return;
        if (byte != '\n') {
            line += byte;
            continue;
        }
        if (line.empty()) {
            m_isUp = true;
            return;
        }
        m_lines.push_back(line);
        line.clear();
    }
}

OddProcess::~OddProcess()
{
    kill();
    if (m_output >= 0)
        close(m_output);
}

void OddProcess::kill()
{
    if (m_pid <= 0)
        return;
    ::kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}

int OddProcess::port(size_t index) const
{
    return index < m_lines.size() ? std::stoi(m_lines[index]) : -1;
}

std::string OddProcess::more()
{
    std::string text;
    std::array<char, 4096> buffer;
    for (pollfd waiting{m_output, POLLIN, 0}; poll(&waiting, 1, 0) > 0;) {
        const ssize_t count = read(m_output, buffer.data(), buffer.size());
        if (count <= 0)
            break;
        text.append(buffer.data(), size_t(count));
    }
    return text;
}
