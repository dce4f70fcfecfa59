// The names of users in the supplied lsof's table.
#include "tests/libexec/SuppliedTools.h"

#include <QElapsedTimer>

#include <fstream>

#include <sched.h>
#include <sys/mount.h>

namespace
{

class UserNames : public SuppliedTools
{
protected:
    /// Runs a program as the viewer, for whom tests/libexec/hanging_database.c comes after the
    /// files.
    BeforeExec withDatabase()
    {
        const std::string settings = directory().path("nsswitch.conf");
        std::ofstream(settings) << "passwd: files hanging\n";
        directory().copy(HANGING_DATABASE, "libnss_hanging.so.2");
        return [settings, enter = asViewer()] {
            return enterNamespaces(CLONE_NEWNS) &&
                   mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                   mount(settings.c_str(), "/etc/nsswitch.conf", nullptr, MS_BIND, nullptr) == 0 &&
                   enter();
        };
    }
    /// The users of the rows with that port, in a list that ends in 20 seconds.
    std::vector<std::string> usersOf(int port, const BeforeExec &before)
    {
        std::vector<std::string> arguments{
            "LD_LIBRARY_PATH=" + directory().path(), "timeout", "-s", "KILL", "20", lsof()};
        arguments.insert(arguments.end(), listing.begin(), listing.end());
        std::vector<std::string> users;
        for (const std::string &line : lines(runProgram("/usr/bin/env", arguments, before).text)) {
            const auto columns = words(line);
            if (columns.size() >= 9 && columns[8].ends_with(':' + std::to_string(port)))
                users.push_back(columns[2]);
        }
        return users;
    }
};

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

TEST_P(UserNames, areThoseOfAnyDatabase)
{
    if (viewer() != 0)
        GTEST_SKIP() << "only root sees another person's listener";
    const BeforeExec before = withDatabase();
    if (runProgram("/bin/true", {}, before).status != 0)
        GTEST_SKIP() << "nothing may be mounted here";
    const OddProcess known({"listen 127.0.0.1", {"x"}, "", asUser(54397)});
    EXPECT_EQ(usersOf(known.port(), before), std::vector<std::string>{"somebody"});
}

TEST_P(UserNames, aDatabaseThatHangsCostsTheName)
{
    const BeforeExec before = withDatabase();
    if (runProgram("/bin/true", {}, before).status != 0)
        GTEST_SKIP() << "nothing may be mounted here";
    // No file names these users, so the database is asked.
    const OddProcess own({"listen 127.0.0.1", {"x"}, "", asUser(viewer() == 0 ? 54399 : viewer())});
    const OddProcess other({"listen 127.0.0.1", {"x"}, "", asUser(54398)});
    ASSERT_TRUE(own.isUp() && other.isUp());

    QElapsedTimer timer;
    timer.start();
    const std::vector<std::string> users = usersOf(own.port(), before);
    EXPECT_LT(timer.elapsed(), 10'000);
    ASSERT_EQ(users.size(), 1U);
    if (viewer() == 0 || viewer() == strangerUser) {
        EXPECT_EQ(users[0], viewer() == 0 ? "54399" : "54321");
    }
}
