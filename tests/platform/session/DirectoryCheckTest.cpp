#include "platform/session/DirectoryCheck.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

using namespace tidewick;

namespace
{

class DirectoryCheckTest : public testing::Test
{
protected:
    /// The answer to a question about `path`, and that it is the only one.
    bool isDirectory(const QString &path)
    {
        QList<bool> answers;
        check.start(path, [&answers](bool isDirectory) { answers.append(isDirectory); });
        EXPECT_TRUE(answers.isEmpty()) << "it comes from the event loop";
        EXPECT_TRUE(waitUntil([&answers] { return !answers.isEmpty(); }));
        EXPECT_EQ(answers.size(), 1);
        return answers.value(0);
    }

    static qsizetype openDescriptors()
    {
        return QDir(QStringLiteral("/proc/self/fd"))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
            .size();
    }

    DirectoryCheck check;
    QTemporaryDir directory;
};

} // namespace

TEST_F(DirectoryCheckTest, knowsADirectoryEachTime)
{
    EXPECT_TRUE(isDirectory(directory.path()));
    EXPECT_TRUE(isDirectory(directory.path()));
    EXPECT_FALSE(isDirectory(QStringLiteral("/etc/passwd")));
    EXPECT_FALSE(isDirectory(directory.filePath(QStringLiteral("missing"))));
}

TEST_F(DirectoryCheckTest, answersEachOfSeveralQuestions)
{
    int answers = 0;
    for (const QString &path : {directory.path(), QStringLiteral("/"), QStringLiteral("/etc")})
        check.start(path, [&answers](bool isDirectory) { answers += isDirectory ? 1 : 0; });
    EXPECT_TRUE(waitUntil([&answers] { return answers == 3; }));
}

TEST_F(DirectoryCheckTest, keepsNothingOfAQuestionThatIsAnswered)
{
    isDirectory(directory.path());
    EXPECT_TRUE(waitUntil([this] { return check.children().isEmpty(); }));
    const qsizetype before = openDescriptors();
    for (int question = 0; question < 10; ++question)
        isDirectory(directory.path());
    EXPECT_TRUE(waitUntil([this] { return check.children().isEmpty(); }));
    EXPECT_EQ(openDescriptors(), before);
}
