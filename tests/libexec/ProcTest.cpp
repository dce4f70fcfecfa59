#include "libexec/proc/Arguments.h"
#include "libexec/proc/ChildAnswer.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/LocalFiles.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/ProcessStat.h"
#include "libexec/proc/Words.h"
#include "tests/libexec/FakeProc.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <array>
#include <cerrno>
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
    constexpr std::string_view status = "Name:\tVmRSS:\nUid:\t1\t2\t3\t4\nVmRSS:\t  1234 kB \nX:\n";
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

TEST(Proc, onlyWordsWithAHyphenAreOptions)
{
    EXPECT_EQ(optionValue({"p", "xname", "no", "-name", "yes"}, "name"), "yes");
    EXPECT_EQ(optionValue({"p", "xname", "no"}, "name"), "");
}

TEST(Proc, filesAreReadWholeUpToALimit)
{
    const QTemporaryDir home;
    const std::filesystem::path place = home.path().toStdString();
    std::string text = "old";
    for (const size_t size : {0U, 1U, 4095U, 4096U, 4097U, 8192U, 10000U}) {
        const std::string written(size, 'x');
        write(place / "file", written);
        EXPECT_TRUE(readFile(AT_FDCWD, (place / "file").c_str(), text));
        EXPECT_EQ(text, written);
    }
    for (const size_t limit : {4U, 4096U, 10'000U}) {
        EXPECT_TRUE(readFile(AT_FDCWD, (place / "file").c_str(), text, limit));
        EXPECT_EQ(text, std::string(limit, 'x'));
    }
    write(place / "file", std::string(2'000'000, 'x'));
    EXPECT_TRUE(readFile(AT_FDCWD, (place / "file").c_str(), text));
    EXPECT_EQ(text.size(), 1'048'576U);
    EXPECT_FALSE(readFile(AT_FDCWD, (place / "none").c_str(), text));
    EXPECT_EQ(text, "");
}

TEST(Proc, commandLinesAreReadUpToALimit)
{
    const QTemporaryDir home;
    const std::string place = home.path().toStdString();
    write(place + "/cmdline", std::string(200'000, 'x'));
    const Descriptor directory(openDirectory(AT_FDCWD, place.c_str()));
    EXPECT_EQ(readCommandLine(directory.value(), "").size(), 131'072U);
}

TEST(Proc, linksAreRead)
{
    const QTemporaryDir home;
    const std::string place = home.path().toStdString();
    std::filesystem::create_symlink("a", place + "/link");
    std::string text = "old";
    EXPECT_TRUE(readLink(AT_FDCWD, (place + "/link").c_str(), text));
    EXPECT_EQ(text, "a");
    EXPECT_FALSE(readLink(AT_FDCWD, (place + "/none").c_str(), text));
    EXPECT_EQ(text, "");
}

TEST(Proc, onlyWhatIsForbiddenWasRefused)
{
    for (const auto &[error, isRefusal] :
         {std::pair(EACCES, true), std::pair(EPERM, true), std::pair(ENOENT, false)}) {
        errno = error;
        EXPECT_EQ(wasRefused(), isRefusal) << error;
    }
}

TEST(Proc, aDescriptorIsClosedAtTheEndOfItsScope)
{
    const int standardInput = dup(STDIN_FILENO);
    for (const int number : {dup(STDERR_FILENO), STDIN_FILENO}) {
        {
            const Descriptor descriptor(number);
        }
        EXPECT_EQ(fcntl(number, F_GETFD), -1) << number;
    }
    dup2(standardInput, STDIN_FILENO);
    close(standardInput);
}

TEST(Proc, allOfATextIsWrittenOnce)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const Descriptor output(ends[0]);
    EXPECT_TRUE(writeAll(ends[1], "a"));
    close(ends[1]);
    std::array<char, 16> read{};
    EXPECT_EQ(::read(output.value(), read.data(), read.size()), 1);
    EXPECT_EQ(read[0], 'a');
    EXPECT_FALSE(writeAll(-1, "a"));
}

TEST(Proc, aChildThatFailsHasNoAnswer)
{
    EXPECT_EQ(askChild([] { return std::string("x"); }), "x");
    EXPECT_EQ(askChild([]() -> std::string { _exit(3); }), std::nullopt);
}

TEST(Proc, aChildThatAnswersHoldsNoOtherDescriptor)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const Descriptor output(ends[0]);
    const Descriptor input(ends[1]);
    const Descriptor directory(openDirectory(AT_FDCWD, "/proc/self"));
    const Descriptor high(fcntl(STDERR_FILENO, F_DUPFD, 500));
    const auto open = [&] {
        std::string list;
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO, output.value(),
                                     input.value(), directory.value(), high.value()}) {
            if (fcntl(descriptor, F_GETFD) >= 0)
                list += std::to_string(descriptor) + ' ';
        }
        return list;
    };
    EXPECT_EQ(askChild(open), "");
    EXPECT_EQ(askChild(open, AT_FDCWD), "");
    EXPECT_EQ(askChild(open, directory.value()), std::to_string(directory.value()) + ' ');
    EXPECT_EQ(askChild(open, STDIN_FILENO), std::to_string(STDIN_FILENO) + ' ');
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

TEST(Proc, childrenThatHangAreKilledAndNotWaitedForLong)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const Descriptor output(ends[0]);
    // In a process of its own: the time of all children together is the program's.
    const pid_t parent = fork();
    if (parent == 0) {
        for (int child = 0; child < 3; ++child) {
            const auto hang = [&] {
                writeAll(ends[1], "x");
                pause();
                return std::string();
            };
            askChild(hang, ends[1]);
        }
        close(ends[1]);
        pause();
    }
    close(ends[1]);
    ASSERT_GT(parent, 0);
    // The end comes once no child holds the pipe.
    std::string asked;
    std::array<char, 16> piece;
    pollfd waiting{output.value(), POLLIN, 0};
    ssize_t size = -1;
    while (poll(&waiting, 1, 30'000) == 1 &&
           (size = read(output.value(), piece.data(), piece.size())) > 0)
        asked.append(piece.data(), size_t(size));
    EXPECT_EQ(size, 0);
    EXPECT_LE(asked.size(), 2U);
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
}

TEST(Proc, fileSystemsOfThisMachine)
{
    for (const char *const type : {"bcachefs", "btrfs", "ext2", "ext3", "ext4", "f2fs", "overlay",
                                   "squashfs", "tmpfs", "xfs", "zfs"})
        EXPECT_TRUE(isLocalType(type)) << type;
    for (const char *const type : {"nfs", "nfs4", "cifs", "9p", "fuse", "fuse.sshfs", "autofs", ""})
        EXPECT_FALSE(isLocalType(type)) << type;
}
