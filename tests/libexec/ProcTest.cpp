#include "libexec/proc/Arguments.h"
#include "libexec/proc/ChildAnswer.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/LocalFiles.h"
#include "libexec/proc/ProcessStat.h"
#include "libexec/proc/Words.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tidewick::libexec;
using namespace std::string_view_literals;

TEST(Proc, numbersAreDigitsAndNothingElse)
{
    EXPECT_EQ(parseNumber("0"), 0U);
    EXPECT_EQ(parseNumber("18446744073709551615"), UINT64_MAX);
    for (const char *const text : {"", "+1", "-1", " 1", "1 ", "0x1", "18446744073709551616"})
        EXPECT_FALSE(parseNumber(text)) << text;
}

TEST(Proc, statIsSplitAfterTheLastParenthesis)
{
    const auto stat =
        parseStat("77 (a) S 1 (\n b) Z 4242 7 7 0 -1 4194304 100 0 0 0 31 12 0 0 20 0 "
                  "1 0 5150 1000 1 18446744073709551615\n");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->comm, "a) S 1 (\n b");
    EXPECT_EQ(stat->state, 'Z');
    EXPECT_EQ(stat->parent, 4242);
    EXPECT_EQ(stat->userTime, 31U);
    EXPECT_EQ(stat->systemTime, 12U);
    EXPECT_EQ(stat->startTime, 5150U);
}

TEST(Proc, aStatThatIsNone)
{
    for (const char *const text : {"", "77", "77 (", ")(", "77 (a)", "77 (a) S", "77 (a) S x 1",
                                   "77 (a) SS 1 7 7 0 -1 4 1 0 0 0 3 1 0 0 20 0 1 0 5 1"})
        EXPECT_FALSE(parseStat(text)) << text;
}

TEST(Proc, statusValues)
{
    constexpr std::string_view status = "Name:\tVmRSS:\nUid:\t1\t2\t3\t4\nVmRSS:\t  1234 kB\nX:\n";
    EXPECT_EQ(statusValue(status, "VmRSS"), "1234 kB");
    EXPECT_EQ(statusValue(status, "Uid"), "1\t2\t3\t4");
    EXPECT_EQ(statusValue(status, "X"), "");
    EXPECT_EQ(statusValue(status, "Vm"), std::nullopt);
}

TEST(Proc, argumentsEndWithANul)
{
    using List = std::vector<std::string_view>;
    EXPECT_EQ(splitArguments(""sv), List());
    EXPECT_EQ(splitArguments("\0"sv), List{""});
    EXPECT_EQ(splitArguments("a\0\0b c\0"sv), (List{"a", "", "b c"}));
    EXPECT_EQ(splitArguments("title without end"sv), List{"title without end"});
}

TEST(Proc, aChildThatAnswersHoldsNoOtherDescriptor)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const Descriptor output(ends[0]);
    const Descriptor input(ends[1]);
    const Descriptor directory(openDirectory(AT_FDCWD, "/proc/self"));
    const auto open = [&] {
        std::string list;
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO, output.value(),
                                     input.value(), directory.value()}) {
            if (fcntl(descriptor, F_GETFD) >= 0)
                list += std::to_string(descriptor) + ' ';
        }
        return list;
    };
    EXPECT_EQ(askChild(open), "");
    EXPECT_EQ(askChild(open, AT_FDCWD), "");
    EXPECT_EQ(askChild(open, directory.value()), std::to_string(directory.value()) + ' ');
    EXPECT_EQ(askChild(open, STDOUT_FILENO), std::to_string(STDOUT_FILENO) + ' ');
}

TEST(Proc, aChildThatHangsEndsWithItsParent)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const Descriptor output(ends[0]);
    const pid_t parent = fork();
    if (parent == 0) {
        const auto hang = [&] {
            const pid_t self = getpid();
            if (write(ends[1], &self, sizeof self) == sizeof self)
                pause();
            return std::string();
        };
        askChild(hang, ends[1]);
        _exit(EXIT_SUCCESS);
    }
    close(ends[1]);
    ASSERT_GT(parent, 0);
    pid_t child = 0;
    EXPECT_EQ(read(output.value(), &child, sizeof child), ssize_t(sizeof child));
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    // The pipe ends with the last process that holds it.
    pollfd waiting{output.value(), POLLIN, 0};
    const bool hasEnded = poll(&waiting, 1, 10'000) == 1;
    EXPECT_TRUE(hasEnded);
    if (!hasEnded && child > 0)
        kill(child, SIGKILL);
}

TEST(Proc, fileSystemsOfThisMachine)
{
    for (const char *const type : {"bcachefs", "btrfs", "ext2", "ext3", "ext4", "f2fs", "overlay",
                                   "squashfs", "tmpfs", "xfs", "zfs"})
        EXPECT_TRUE(isLocalType(type)) << type;
    for (const char *const type : {"nfs", "nfs4", "cifs", "9p", "fuse", "fuse.sshfs", "autofs", ""})
        EXPECT_FALSE(isLocalType(type)) << type;
}
