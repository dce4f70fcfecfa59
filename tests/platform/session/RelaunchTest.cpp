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
    /// A program that leaves the number of its open descriptors in `trace`.
    RelaunchTest()
    {
        QFile file(program);
        if (!file.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write the program");
        file.write("#!/bin/sh\nset -- /proc/$$/fd/*\necho $# >" + trace.toLocal8Bit() +
                   ".new && mv " + trace.toLocal8Bit() + ".new " + trace.toLocal8Bit() + "\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// Starts a process that asks for `path` to be started after it; what it was told.
    QByteArray ask(const QString &path)
    {
        old.start(QCoreApplication::applicationDirPath() + QStringLiteral("/relauncher"), {path});
        waitUntil([this] { return old.canReadLine(); });
        return old.readLine().trimmed();
    }

    QByteArray takeTrace() const
    {
        QFile file(trace);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QByteArray text = file.readAll();
        file.remove();
        return text;
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
    const int asAnyProgram = takeTrace().trimmed().toInt();
    ASSERT_GT(asAnyProgram, 0);
    ASSERT_EQ(ask(program), "yes");
    old.closeWriteChannel();
    ASSERT_TRUE(waitUntil([this] { return QFile::exists(trace); }));
    EXPECT_LE(takeTrace().trimmed().toInt(), asAnyProgram);
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
