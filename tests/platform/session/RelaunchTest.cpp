#include "platform/session/Relaunch.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

using namespace tidewick;

namespace
{

class RelaunchTest : public testing::Test
{
protected:
    /// A program that leaves in `trace` the number of its open descriptors, its blocked signals,
    /// and how its session and its process are called.
    RelaunchTest()
    {
        QFile file(program);
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write the program");
        file.write("#!/bin/sh\nset -- /proc/$$/fd/*\n"
                   "blocked=$(sed -n 's/^SigBlk:.//p' /proc/$$/status)\n"
                   "session=$(cut -d ' ' -f 6 /proc/$$/stat)\n"
                   "echo $# $blocked $session $$ >" +
                   trace.toLocal8Bit() + ".new && mv " + trace.toLocal8Bit() + ".new " +
                   trace.toLocal8Bit() + "\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// Starts a process that asks for `path` to be started after it; what it was told.
    QByteArray ask(const QString &path)
    {
        old.start(QCoreApplication::applicationDirPath() + QStringLiteral("/relauncher"), {path});
        waitUntil([this] { return old.canReadLine(); });
        return old.readLine().trimmed();
    }

    QList<QByteArray> takeTrace() const
    {
        QFile file(trace);
        if (!waitUntil([&file] { return file.exists(); }) || !file.open(QIODevice::ReadOnly))
            return QList<QByteArray>(4);
        const QByteArray text = file.readAll();
        file.remove();
        return text.trimmed().split(' ');
    }

    QTemporaryDir directory;
    const QString program = directory.filePath(QStringLiteral("program"));
    const QString trace = directory.filePath(QStringLiteral("trace"));
    QProcess old;
};

} // namespace

TEST_F(RelaunchTest, startsTheProgramOnceTheOldProcessHasEnded)
{
    ASSERT_EQ(ask(program), "yes");
    EXPECT_FALSE(waitUntil([this] { return QFile::exists(trace); }, 200));
    old.closeWriteChannel();
    ASSERT_TRUE(waitUntil([this] { return QFile::exists(trace); }));
}

TEST_F(RelaunchTest, startsItEvenWhereTheOldProcessIsKilled)
{
    ASSERT_EQ(ask(program), "yes");
    old.kill();
    EXPECT_TRUE(waitUntil([this] { return QFile::exists(trace); }));
}

TEST_F(RelaunchTest, handsNoDescriptorOn)
{
    QProcess::execute(program);
    const int asAnyProgram = takeTrace()[0].toInt();
    ASSERT_GT(asAnyProgram, 0);
    ASSERT_EQ(ask(program), "yes");
    old.closeWriteChannel();
    const int descriptors = takeTrace()[0].toInt();
    EXPECT_GT(descriptors, 0);
    EXPECT_LE(descriptors, asAnyProgram);
}

TEST_F(RelaunchTest, startsItWithNoSignalBlockedInASessionOfItsOwn)
{
    ASSERT_EQ(ask(program), "yes");
    old.closeWriteChannel();
    const QList<QByteArray> words = takeTrace();
    EXPECT_EQ(words[1], "0000000000000000");
    EXPECT_EQ(words[2], words[3]);
}

TEST_F(RelaunchTest, refusesWhatIsNoProgram)
{
    EXPECT_EQ(ask(directory.filePath(QStringLiteral("missing"))), "no");
    old.closeWriteChannel();
    EXPECT_TRUE(waitUntil([this] { return old.state() == QProcess::NotRunning; }));
}

TEST_F(RelaunchTest, knowsItsOwnProgram)
{
    EXPECT_FALSE(isReplaced(QCoreApplication::applicationFilePath()));
    EXPECT_TRUE(isReplaced(program));
    EXPECT_FALSE(isReplaced(directory.filePath(QStringLiteral("missing"))));
}
