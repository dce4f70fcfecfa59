#include "app/Environment.h"

#include "scan/ProcessToolRunner.h"
#include "scan/ToolTable.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

/// Prints a line that nobody can read any more.
[[noreturn]] void printIntoABrokenPipe()
{
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0)
        std::_Exit(2);
    dup2(pipe[1], STDOUT_FILENO);
    close(pipe[0]);
    close(pipe[1]);
    std::puts("nobody reads this");
    std::fflush(stdout);
    std::_Exit(0);
}

} // namespace

struct PlatformRow
{
    const char *name;
    DisplayServers servers;
    const char *platforms;
};

class PlatformsFor : public testing::TestWithParam<PlatformRow>
{
};

TEST_P(PlatformsFor, giveThePanelItsPlace)
{
    EXPECT_EQ(platformsFor(GetParam().servers), GetParam().platforms);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PlatformsFor,
    testing::Values(PlatformRow{"x11AloneIsTheToolkitsChoice", {true, false, false}, ""},
                    PlatformRow{"waylandAloneIsTheToolkitsChoice", {false, true, false}, ""},
                    PlatformRow{"neitherIsTheToolkitsChoice", {false, false, false}, ""},
                    PlatformRow{"xwaylandWithoutLayers", {true, true, false}, "xcb;wayland"},
                    PlatformRow{"layersBeforeXwayland", {true, true, true}, "wayland;xcb"},
                    PlatformRow{"layersWithoutXwayland", {false, true, true}, "wayland"}),
    rowName);

TEST(Environment, columnsOfATerminalTruncateNoCommandLine)
{
    const QString longArgument(300, QLatin1Char('a'));
    QProcess process;
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), QStringLiteral("read line"), longArgument});
    ASSERT_TRUE(process.waitForStarted());
    qputenv("COLUMNS", "80");
    qputenv("TIDEWICK_TEST", "kept");
    prepareEnvironment();
    const ToolResult result =
        ProcessToolRunner().run(presentTool(ToolTable::stock().ps),
                                {QStringLiteral("-p"), QString::number(process.processId()),
                                 QStringLiteral("-o"), QStringLiteral("command=")},
                                {});
    EXPECT_TRUE(result.standardOutput.contains(longArgument.toUtf8()))
        << result.standardOutput.toStdString();
    EXPECT_EQ(qgetenv("TIDEWICK_TEST"), "kept");
    process.closeWriteChannel();
    process.waitForFinished();
}

TEST(Environment, onlyMessagesThatConcernNobodyAreDropped)
{
    prepareEnvironment();
    testing::internal::CaptureStderr();
    qWarning("The cached device pixel ratio value was stale on window update.");
    qWarning("QXcbIntegration: Cannot create platform OpenGL context, neither GLX nor EGL are "
             "enabled");
    qWarning("Warning: fallback to QtQuick software backend.");
    qWarning("another warning");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "another warning\n");
}

TEST(Environment, lineThatNobodyReadsEndsNothing)
{
    EXPECT_EXIT((prepareEnvironment(), printIntoABrokenPipe()), testing::ExitedWithCode(0), "");
}

TEST(Environment, closedStandardDescriptorsAreOpened)
{
    const auto opensThem = [] {
        for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
            close(descriptor);
        prepareEnvironment();
        const bool isRight = fcntl(STDIN_FILENO, F_GETFD) >= 0 &&
                             fcntl(STDOUT_FILENO, F_GETFD) >= 0 &&
                             fcntl(STDERR_FILENO, F_GETFD) >= 0;
        _exit(isRight ? EXIT_SUCCESS : EXIT_FAILURE);
    };
    EXPECT_EXIT(opensThem(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(Environment, toolsEndWithTheirPipesAsEver)
{
    prepareEnvironment();
    QProcess process;
    process.start(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), QStringLiteral("kill -PIPE $$; exit 0")});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(process.exitCode(), SIGPIPE);
}
