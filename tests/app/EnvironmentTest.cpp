#include "app/Environment.h"

#include "scan/ProcessToolRunner.h"
#include "scan/ToolTable.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QLoggingCategory>
#include <QProcess>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <unistd.h>
#include <utility>
#include <vector>

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

/// Changes variables of the environment, a null value to unset, until the end of the test.
class Variables
{
public:
    void set(const char *name, const char *value)
    {
        m_before.emplace_back(name, qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name))
                                                                    : std::nullopt);
        value ? qputenv(name, value) : qunsetenv(name);
    }
    ~Variables()
    {
        for (const auto &[name, value] : m_before)
            value ? qputenv(name, *value) : qunsetenv(name);
    }
    Variables() = default;
    Q_DISABLE_COPY_MOVE(Variables)

private:
    std::vector<std::pair<const char *, std::optional<QByteArray>>> m_before;
};

constexpr const char *platform = "QT_QPA_PLATFORM";
constexpr const char *backend = "QT_QUICK_BACKEND";
constexpr const char *interface = "QSG_RHI_BACKEND";
constexpr const char *integration = "QT_XCB_GL_INTEGRATION";

} // namespace

struct ChoiceRow
{
    const char *name;
    std::array<const char *, 4> before; ///< of the four variables above; null where it is not set
    std::array<const char *, 4> after;
};

class Choice : public testing::TestWithParam<ChoiceRow>
{
};

// Where both display servers are told of and none can be reached, so no layers are offered.
TEST_P(Choice, keepsWhatThePersonChose)
{
    const std::array names{platform, backend, interface, integration};
    Variables variables;
    variables.set("DISPLAY", ":no-such-server");
    variables.set("WAYLAND_DISPLAY", "no-such-server");
    for (size_t i = 0; i < names.size(); ++i)
        variables.set(names[i], GetParam().before[i]);
    prepareEnvironment();
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(qEnvironmentVariableIsSet(names[i]), GetParam().after[i] != nullptr) << names[i];
        EXPECT_EQ(qgetenv(names[i]), GetParam().after[i]) << names[i];
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Choice,
    testing::Values(
        ChoiceRow{"ours", {}, {"xcb;wayland", "software", nullptr, "none"}},
        ChoiceRow{"platform", {"vnc"}, {"vnc", "software", nullptr, "none"}},
        ChoiceRow{"backend", {nullptr, "rhi"}, {"xcb;wayland", "rhi", nullptr, nullptr}},
        ChoiceRow{
            "interface", {nullptr, nullptr, "vulkan"}, {"xcb;wayland", nullptr, "vulkan", nullptr}},
        ChoiceRow{"integration",
                  {nullptr, nullptr, nullptr, "xcb_egl"},
                  {"xcb;wayland", "software", nullptr, "xcb_egl"}}),
    rowName);

TEST(Environment, withoutADisplayNothingIsChosen)
{
    Variables variables;
    for (const char *name : {platform, "DISPLAY", "WAYLAND_DISPLAY"})
        variables.set(name, nullptr);
    prepareEnvironment();
    EXPECT_FALSE(qEnvironmentVariableIsSet(platform));
}

TEST(Environment, warningsOfTheToolkitComeBackOnDemandOnly)
{
    prepareEnvironment();
    for (const char *name :
         {"qt.qpa.services", "qt.qpa.theme.dbus", "qt.qpa.theme.gnome", "qt.accessibility.atspi"}) {
        const QLoggingCategory category(name);
        EXPECT_FALSE(category.isWarningEnabled()) << name;
        EXPECT_TRUE(category.isCriticalEnabled()) << name;
    }
}

TEST(Environment, callThatABrokenPipeInterruptsGoesOn)
{
    prepareEnvironment();
    struct sigaction action = {};
    ASSERT_EQ(sigaction(SIGPIPE, nullptr, &action), 0);
    EXPECT_TRUE(action.sa_flags & SA_RESTART);
}

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

TEST(Environment, closedStandardDescriptorsAreOpenedAndNoOther)
{
    const auto opensThem = [] {
        for (int descriptor = 0; descriptor <= STDERR_FILENO + 1; ++descriptor)
            close(descriptor);
        prepareEnvironment();
        const bool isRight =
            fcntl(STDIN_FILENO, F_GETFD) >= 0 && fcntl(STDOUT_FILENO, F_GETFD) >= 0 &&
            fcntl(STDERR_FILENO, F_GETFD) >= 0 && fcntl(STDERR_FILENO + 1, F_GETFD) < 0;
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
