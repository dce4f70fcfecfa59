#include "model/PortInfo.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QDir>

#include <concepts>

using tidewick::PortInfo;
using tidewick::ServiceType;

namespace
{

PortInfo anyRecord()
{
    return PortInfo(3000, QStringLiteral("812"), QStringLiteral("node"), QStringLiteral("alice"),
                    QStringLiteral("localhost"));
}

} // namespace

TEST(PortInfo, keepsItsIdentityFieldsAsGiven)
{
    const PortInfo record = anyRecord();
    EXPECT_EQ(record.port(), 3000);
    EXPECT_EQ(record.pid(), QStringLiteral("812"));
    EXPECT_EQ(record.command(), QStringLiteral("node"));
    EXPECT_EQ(record.user(), QStringLiteral("alice"));
    EXPECT_EQ(record.address(), QStringLiteral("localhost"));
    EXPECT_FALSE(record.id().isNull());
}

TEST(PortInfo, startsWithNothingElseKnown)
{
    const PortInfo record = anyRecord();
    EXPECT_TRUE(record.fullCommand.isEmpty());
    EXPECT_TRUE(record.workingDirectory.isEmpty());
    EXPECT_EQ(record.serviceType, ServiceType::unknown());
    EXPECT_TRUE(record.metadata.isEmpty());
    EXPECT_FALSE(record.isHttpAccessible);
    EXPECT_FALSE(record.httpStatus);
    EXPECT_FALSE(record.isCheckingHttp);
    EXPECT_EQ(record.memoryUsage, 0);
    EXPECT_EQ(record.cpuUsage, 0);
    EXPECT_FALSE(record.startTime);
}

TEST(PortInfo, hasAFreshIdWhateverItsFields)
{
    EXPECT_NE(anyRecord().id(), anyRecord().id());
}

TEST(PortInfo, isAValueWhoseCopiesKeepTheIdAndChangeAlone)
{
    const PortInfo original = anyRecord();
    PortInfo copy = original;
    copy.fullCommand = QStringLiteral("node server.js");
    copy.metadata.insert(QStringLiteral("script"), QStringLiteral("server.js"));
    EXPECT_EQ(copy.id(), original.id());
    EXPECT_TRUE(original.fullCommand.isEmpty());
    EXPECT_TRUE(original.metadata.isEmpty());
}

TEST(PortInfo, hasNoEqualityOfItsOwn)
{
    EXPECT_FALSE(std::equality_comparable<PortInfo>);
}

struct ProjectNameRow
{
    const char *name;
    const char *workingDirectory;
    const char *script; // null: no such entry
    const char *projectName;
};

class ProjectName : public testing::TestWithParam<ProjectNameRow>
{
};

TEST_P(ProjectName, isDerivedFromDirectoryOrScript)
{
    PortInfo record = anyRecord();
    record.workingDirectory = QString::fromUtf8(GetParam().workingDirectory);
    record.metadata.insert(QStringLiteral("framework"), QStringLiteral("Vite"));
    if (GetParam().script != nullptr)
        record.metadata.insert(QStringLiteral("script"), QString::fromUtf8(GetParam().script));
    EXPECT_EQ(record.projectName(), QString::fromUtf8(GetParam().projectName));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ProjectName,
    testing::Values(
        ProjectNameRow{"directory", "/Users/a/shop", nullptr, "shop"},
        ProjectNameRow{"directoryWinsOverScript", "/Users/a/shop", "server.js", "shop"},
        ProjectNameRow{"trailingSlash", "/Users/a/shop/", nullptr, "shop"},
        ProjectNameRow{"doubledSlashes", "/Users//a/shop//", nullptr, "shop"},
        ProjectNameRow{"srcYieldsParent", "/Users/a/shop/src", nullptr, "shop"},
        ProjectNameRow{"distYieldsParent", "/Users/a/shop/dist", nullptr, "shop"},
        ProjectNameRow{"buildYieldsParent", "/Users/a/shop/build/", nullptr, "shop"},
        ProjectNameRow{"serverYieldsParent", "/Users/a/shop/server", nullptr, "shop"},
        ProjectNameRow{"comparisonIsCaseSensitive", "/Users/a/shop/Src", nullptr, "Src"},
        ProjectNameRow{"wholeComponentOnly", "/Users/a/shop/src2", nullptr, "src2"},
        ProjectNameRow{"parentIsTakenOnceOnly", "/Users/a/app/src/server", nullptr, "src"},
        ProjectNameRow{"srcBelowRootYieldsRoot", "/src", nullptr, "/"},
        ProjectNameRow{"root", "/", nullptr, "/"},
        ProjectNameRow{"spacesAndUnicode", "/home/a/mein Café", nullptr, "mein Café"},
        ProjectNameRow{"dotInDirectoryName", "/home/a/tidewick.dev", nullptr, "tidewick.dev"},
        ProjectNameRow{"scriptWithPath", "", "/x/y/server.js", "server"},
        ProjectNameRow{"scriptWithoutExtension", "", "app", "app"},
        ProjectNameRow{"scriptLosesLastExtensionOnly", "", "a/app.test.ts", "app.test"},
        ProjectNameRow{"dotInScriptDirectoryStays", "", "/x/y.z/app", "app"},
        ProjectNameRow{"scriptOfOneLetter", "", "/x/a.js", "a"},
        ProjectNameRow{"scriptCalledJustAnExtension", "", "/x/.js", ".js"},
        ProjectNameRow{"buildDirectoryRuleIsNotForScripts", "", "/x/server.js", "server"},
        ProjectNameRow{"neitherDirectoryNorScript", "", nullptr, "Node App"}),
    rowName);

TEST(PortInfo, projectNameOfABareRecordIsTheFallback)
{
    EXPECT_EQ(anyRecord().projectName(), QStringLiteral("Node App"));
}

TEST(PortInfo, relativeDirectoryIsResolvedAgainstTheCurrentOne)
{
    PortInfo record = anyRecord();
    record.workingDirectory = QStringLiteral("src");
    EXPECT_EQ(record.projectName(), QDir::current().dirName());
}

TEST(PortInfo, projectNameFollowsItsFields)
{
    PortInfo record = anyRecord();
    record.workingDirectory = QStringLiteral("/a/one");
    EXPECT_EQ(record.projectName(), QStringLiteral("one"));
    record.workingDirectory = QStringLiteral("/a/two");
    EXPECT_EQ(record.projectName(), QStringLiteral("two"));
}
