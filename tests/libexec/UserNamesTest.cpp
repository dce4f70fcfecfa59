// The names of users in the supplied lsof's table.
#include "tests/libexec/SuppliedTools.h"

#include <QElapsedTimer>

#include <fstream>

#include <sched.h>
#include <sys/mount.h>

namespace
{

using UserNames = SuppliedTools;

} // namespace

INSTANTIATE_TEST_SUITE_P(As, UserNames, testing::Values(0U, strangerUser), viewerName);

// What a directory service of long ago had in /etc/passwd.
TEST_P(UserNames, entriesThatBeginWithASignAreNoNames)
{
    const std::string user = std::to_string(viewer() == 0 ? 54399 : viewer());
    const std::string users = directory().path("passwd");
    std::ofstream(users) << "+old:x:" << user << ":0:::\n-older:x:" << user << ":0:::\n";
    const auto before = [&] {
        return enterNamespaces(CLONE_NEWNS) &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount(users.c_str(), "/etc/passwd", nullptr, MS_BIND, nullptr) == 0 && asViewer()();
    };
    if (runProgram("/bin/true", {}, before).status != 0)
        GTEST_SKIP() << "nothing may be mounted here";
    const OddProcess own({"listen 127.0.0.1", {"x"}, "", asUser(uid_t(std::stoi(user)))});
    const auto list = rowsOf(own.port(), before);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].user, user);
}

TEST_P(UserNames, aDatabaseThatHangsCostsTheName)
{
    const std::string settings = directory().path("nsswitch.conf");
    std::ofstream(settings) << "passwd: files hanging\n";
    const std::string module = directory().copy(HANGING_DATABASE, "libnss_hanging.so.2");
    const auto before = [&] {
        return enterNamespaces(CLONE_NEWNS) &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount(settings.c_str(), "/etc/nsswitch.conf", nullptr, MS_BIND, nullptr) == 0 &&
               asViewer()();
    };
    if (runProgram("/bin/true", {}, before).status != 0)
        GTEST_SKIP() << "nothing may be mounted here";
    // No file names these users, so the database is asked.
    const OddProcess own({"listen 127.0.0.1", {"x"}, "", asUser(viewer() == 0 ? 54399 : viewer())});
    const OddProcess other({"listen 127.0.0.1", {"x"}, "", asUser(54398)});
    ASSERT_TRUE(own.isUp() && other.isUp());

    std::vector<std::string> arguments{
        "LD_LIBRARY_PATH=" + directory().path(), "timeout", "-s", "KILL", "20", lsof()};
    arguments.insert(arguments.end(), listing.begin(), listing.end());
    QElapsedTimer timer;
    timer.start();
    const Output output = runProgram("/usr/bin/env", arguments, before);
    EXPECT_LT(timer.elapsed(), 10'000);
    const std::string end = ':' + std::to_string(own.port());
    int count = 0;
    for (const std::string &line : lines(output.text)) {
        const auto columns = words(line);
        if (columns.size() < 9 || !columns[8].ends_with(end))
            continue;
        ++count;
        if (viewer() == 0 || viewer() == strangerUser) {
            EXPECT_EQ(columns[2], viewer() == 0 ? "54399" : "54321");
        }
    }
    EXPECT_EQ(count, 1);
}
