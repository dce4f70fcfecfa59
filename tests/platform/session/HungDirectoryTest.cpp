#include "tests/support/system/HungDirectory.h"
#include "platform/session/DesktopWorkspace.h"
#include "platform/session/DirectoryCheck.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tidewick;
using namespace std::chrono_literals;

namespace
{

QString hungDirectory;

/// The processes of this program that this one has started and that have not ended.
QStringList children()
{
    const auto command = [](const QString &process) {
        QFile file(process + QStringLiteral("/comm"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QStringList children;
    for (const QString &name :
         QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")})) {
        const QString process = QStringLiteral("/proc/") + name;
        QFile file(process + QStringLiteral("/stat"));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray text = file.readAll();
        const QList<QByteArray> words = text.mid(text.lastIndexOf(')') + 2).split(' ');
        if (words.size() > 1 && words[0] != "Z" && words[1].toInt() == getpid() &&
            command(process) == command(QStringLiteral("/proc/self")))
            children.append(process);
    }
    return children;
}

class HungDirectory : public testing::Test
{
protected:
    void SetUp() override
    {
        if (hungDirectory.isEmpty())
            GTEST_SKIP() << "the kernel refuses a file system of one's own";
    }

    QStringList hangingChildren() const
    {
        QStringList hanging = children();
        hanging.removeIf([this](const QString &child) { return others.contains(child); });
        return hanging;
    }

    /// The file system's own process, and those that earlier tests have left behind.
    const QStringList others = children();
    PrivateBus bus;
    QList<QUrl> opened;
    DesktopWorkspace workspace{[this](const QUrl &url) { opened += url; }, bus.connect()};
    QTemporaryDir directory;
};

} // namespace

TEST_F(HungDirectory, holdsUpNothingButItsOwnQuestion)
{
    QElapsedTimer timer;
    timer.start();
    for (int press = 0; press < 3; ++press)
        workspace.revealDirectory(hungDirectory);
    EXPECT_LT(std::chrono::milliseconds(timer.elapsed()), DirectoryCheck::timeout);
    ASSERT_TRUE(waitUntil([&] { return !hangingChildren().isEmpty(); }));
    EXPECT_EQ(hangingChildren().size(), 1) << "one question about a path at a time";
    const QString descriptors = hangingChildren().first() + QStringLiteral("/fd");
    EXPECT_TRUE(QDir(descriptors).isReadable());
    EXPECT_TRUE(waitUntil([&descriptors] {
        return QDir(descriptors).entryList(QDir::System | QDir::NoDotAndDotDot).isEmpty();
    }));

    workspace.revealDirectory(directory.path());
    EXPECT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
    EXPECT_FALSE(waitUntil([&] { return opened.size() > 1; }, 3000));
    EXPECT_EQ(opened, QList<QUrl>({QUrl::fromLocalFile(directory.path())}));
}

class HungDirectoryAndSignal : public HungDirectory, public testing::WithParamInterface<int>
{
public:
    HungDirectoryAndSignal()
    {
        std::signal(GetParam(), [](int) {});
    }
    ~HungDirectoryAndSignal() override { std::signal(GetParam(), SIG_DFL); }

    /// Whether the process catches the signal; nothing if it has ended.
    static std::optional<bool> isCaught(const QString &process)
    {
        QFile file(process + QStringLiteral("/status"));
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const qsizetype found = text.indexOf("SigCgt:");
        if (found < 0)
            return std::nullopt;
        const quint64 caught = text.mid(found + 8, 16).toULongLong(nullptr, 16);
        return ((caught >> (GetParam() - 1)) & 1) != 0;
    }
};

TEST_P(HungDirectoryAndSignal, childDoesNotCatchWhatThisProcessCatches)
{
    ASSERT_EQ(isCaught(QStringLiteral("/proc/self")), true);
    DirectoryCheck check;
    check.start(hungDirectory, [](bool) {});
    ASSERT_TRUE(waitUntil([&] { return !hangingChildren().isEmpty(); }));
    const QString child = hangingChildren().first();
    EXPECT_TRUE(waitUntil([&] { return isCaught(child) == false; }));
}

INSTANTIATE_TEST_SUITE_P(Endings, HungDirectoryAndSignal, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(HungDirectory, isNoDirectoryAfterTheTimeout)
{
    DirectoryCheck check;
    QList<bool> answers;
    QElapsedTimer timer;
    timer.start();
    check.start(hungDirectory, [&](bool isDirectory) { answers.append(isDirectory); });
    ASSERT_TRUE(waitUntil([&] { return !answers.isEmpty(); }));
    EXPECT_GE(std::chrono::milliseconds(timer.elapsed()), DirectoryCheck::timeout - 200ms);
    check.start(hungDirectory, [&](bool isDirectory) { answers.append(isDirectory); });
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 2; }, 1000));
    EXPECT_EQ(hangingChildren().size(), 1);
    EXPECT_FALSE(
        waitUntil([&] { return answers.size() > 2; }, 2 * DirectoryCheck::timeout.count()));
    EXPECT_EQ(answers, QList<bool>({false, false})) << "each question has one answer";
}

TEST_F(HungDirectory, holdsOnlySoManyChildren)
{
    DirectoryCheck check;
    int answers = 0;
    const int questions = DirectoryCheck::mostAtOnce + 4;
    for (int i = 0; i < questions; ++i)
        check.start(hungDirectory + QString(i, QLatin1Char('/')), [&](bool) { ++answers; });
    EXPECT_TRUE(waitUntil([&] { return answers == 4; }));
    EXPECT_TRUE(waitUntil([&] { return hangingChildren().size() == DirectoryCheck::mostAtOnce; }));
    EXPECT_TRUE(waitUntil([&] { return answers == questions; }));
}

TEST_F(HungDirectory, keepsNobodyFromEnding)
{
    const auto askAndEnd = [this] {
        DirectoryCheck check;
        check.start(hungDirectory, [](bool) {});
        waitUntil([this] { return !hangingChildren().isEmpty(); });
        std::_Exit(0);
    };
    QElapsedTimer timer;
    timer.start();
    EXPECT_EXIT(askAndEnd(), testing::ExitedWithCode(0), "");
    EXPECT_LT(timer.elapsed(), 10'000);
}

TEST_F(HungDirectory, leavesNoChildBehindWhereDescriptorsAreMissing)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs descriptors";
#endif
    DirectoryCheck check;
    QList<bool> answers;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const int lowestFree = dup(STDERR_FILENO);
    close(lowestFree);
    const rlimit none{rlim_t(lowestFree), limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    check.start(directory.path(), [&](bool isDirectory) { answers.append(isDirectory); });
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_TRUE(waitUntil([&] { return answers == QList<bool>({false}); }));
    EXPECT_FALSE(waitUntil([] { return waitpid(-1, nullptr, WNOHANG) > 0; }, 500));
}

// A process with threads gets no user namespace, so this comes before everything else.
int main(int argc, char *argv[])
{
    hungDirectory = mountHungDirectory();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
