#pragma once

#include "tests/libexec/OddProcess.h"
#include "tests/support/system/Namespaces.h"
#include "tests/support/system/SharedDirectory.h"
#include "tests/support/system/Users.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>

#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

/// `few` in the suite, `many` where scripts/load runs it.
inline int load(int few, int many)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment
    return std::getenv("TIDEWICK_FULL_LOAD") ? many : few;
}

inline const std::vector<std::string> listing{"-i", "TCP", "-P", "-n", "-sTCP:LISTEN"};

struct Row
{
    std::string command;
    pid_t pid = 0;
    std::string user;
    std::string descriptor;
    std::string name;
};

inline std::vector<std::string> words(const std::string &text)
{
    std::istringstream stream(text);
    std::vector<std::string> list;
    for (std::string word; stream >> word;)
        list.push_back(word);
    return list;
}

inline std::vector<std::string> lines(const std::string &text)
{
    std::istringstream stream(text);
    std::vector<std::string> list;
    for (std::string line; std::getline(stream, line);)
        list.push_back(line);
    return list;
}

/// Other arguments than those that are used end with one line, which names those.
inline void expectRefused(const std::string &tool, const std::vector<std::string> &arguments,
                          const BeforeExec &before)
{
    const Output output = runProgram(tool, arguments, before);
    EXPECT_EQ(output.text, "");
    const std::regex names("(lsof|ps): only \"-.*\" (is|are) known here\n");
    EXPECT_TRUE(std::regex_match(output.errors, names)) << output.errors;
    EXPECT_EQ(output.status, 1);
}

inline void expectLessThanFourMegabytes(const std::string &command, const BeforeExec &before)
{
    const OddProcess usage({"usage " + command, {"x"}, "", before});
    ASSERT_EQ(usage.lines().size(), 1U);
    EXPECT_LT(usage.port(), 4096) << command;
}

/// What the supplied lsof prints for one who looks: root, or an ordinary user.
class SuppliedTools : public testing::TestWithParam<uid_t>
{
protected:
    void SetUp() override
    {
        if (GetParam() == 0 && !isRoot())
            GTEST_SKIP() << "only root can look as root";
        m_ownNetwork = enterOwnNetwork();
    }

    static bool isRoot() { return isRealRoot(); }
    uid_t viewer() const { return isRoot() ? GetParam() : geteuid(); }
    BeforeExec asViewer() const { return asUser(viewer()); }
    bool ownNetwork() const { return m_ownNetwork; }

    std::string lsof() const { return m_lsof; }

    std::vector<Row> rows(const BeforeExec &before) const
    {
        const Output output = runProgram(m_lsof, listing, before);
        EXPECT_EQ(output.errors, "");
        std::vector<Row> list;
        const auto all = lines(output.text);
        for (size_t i = 1; i < all.size(); ++i) {
            const auto columns = words(all[i]);
            EXPECT_EQ(columns.size(), 10U) << all[i];
            if (columns.size() != 10)
                continue;
            EXPECT_EQ(columns[9], "(LISTEN)");
            list.push_back({columns[0], std::stoi(columns[1]), columns[2], columns[3], columns[8]});
        }
        return list;
    }

    /// The rows of a port, in the order in which they are printed.
    std::vector<Row> rowsOf(int port) const { return rowsOf(port, asViewer()); }
    std::vector<Row> rowsOf(int port, const BeforeExec &before) const
    {
        const std::string end = ':' + std::to_string(port);
        std::vector<Row> list = rows(before);
        std::erase_if(list, [&end](const Row &row) { return !row.name.ends_with(end); });
        return list;
    }

    /// What the COMMAND column says of a process that listens and is what `settings` say.
    std::string commandOf(OddProcess::Settings settings) const
    {
        if (!settings.before)
            settings.before = asViewer();
        settings.script = "listen 127.0.0.1|" + settings.script;
        const OddProcess process(settings);
        EXPECT_TRUE(process.isUp());
        const auto list = rowsOf(process.port());
        EXPECT_EQ(list.size(), 1U);
        if (list.size() != 1)
            return {};
        EXPECT_EQ(list[0].pid, process.pid());
        return list[0].command;
    }

    /// A copy of odd_process of that name.
    std::string program(const std::string &name) const
    {
        return m_directory.copy(oddProgram(), name);
    }
    const SharedDirectory &directory() const { return m_directory; }

private:
    SharedDirectory m_directory;
    std::string m_complete = m_directory.copy(SUPPLIED_TOOLS "/lsof-complete");
    std::string m_lsof = m_directory.copy(SUPPLIED_TOOLS "/lsof", "supplied-lsof");
    bool m_ownNetwork = false;
};

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): GTEST_SKIP returns from the test
#define NEEDS_ROOT(what)                                                                           \
    if (!isRoot())                                                                                 \
    GTEST_SKIP() << "only root can " << what

inline std::string viewerName(const testing::TestParamInfo<uid_t> &info)
{
    return info.param == 0 ? "root" : "user";
}
