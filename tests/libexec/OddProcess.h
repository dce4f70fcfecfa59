#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

/// A user without an account, for what is run as an ordinary user.
constexpr uid_t strangerUser = 54321;

/// What a child does before it becomes its program. Returns false to give up.
using BeforeExec = std::function<bool()>;

/// Makes the child a process of `user` where this one is root's; else it stays what it is.
BeforeExec asUser(uid_t user);

struct Output
{
    std::string text;
    std::string errors;
    int status = -1; ///< -1: it did not exit
};

/// Runs a program to its end.
Output runProgram(const std::string &program, const std::vector<std::string> &arguments,
                  const BeforeExec &before = {}, const char *locale = "C.UTF-8");

/// The path of tests/libexec/odd_process.c as a program that every user can run.
const std::string &oddProgram();

/// tests/libexec/odd_process.c, running; it dies with the test, and its children with it.
class OddProcess
{
public:
    struct Settings
    {
        std::string script = {};
        std::vector<std::string> arguments{"odd"};
        std::string executable = {}; ///< odd_process itself where it is empty
        BeforeExec before = {};
        int executableDescriptor = -1; ///< run this file instead
        std::string directory = {};    ///< its working directory
    };

    /// Starts it and reads what it prints, up to an empty line.
    explicit OddProcess(const Settings &settings);
    ~OddProcess();
    OddProcess(const OddProcess &) = delete;
    OddProcess &operator=(const OddProcess &) = delete;

    pid_t pid() const { return m_pid; }
    bool isUp() const { return m_isUp; }
    /// The lines that it printed: ports, mostly.
    const std::vector<std::string> &lines() const { return m_lines; }
    int port(size_t index = 0) const;
    /// Whatever it has printed since, without waiting.
    std::string more();
    void kill();

private:
    pid_t m_pid = -1;
    int m_output = -1;
    bool m_isUp = false;
    std::vector<std::string> m_lines;
};
