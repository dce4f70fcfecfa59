#include "libexec/names/EscapedText.h"
#include "libexec/names/KnownNames.h"
#include "libexec/names/LowerCase.h"
#include "libexec/names/ProgramName.h"
#include "scan/SocketScan.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace tidewick::libexec;

TEST(Names, noByteOfAWordEndsIt)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string escaped = escapeWord(std::string(1, char(byte)));
        EXPECT_FALSE(escaped.empty());
        EXPECT_TRUE(std::all_of(escaped.begin(), escaped.end(),
                                [](char c) { return c > 0x20 && c < 0x7f; }));
        EXPECT_EQ(escaped.size(), byte > 0x20 && byte < 0x7f && byte != '\\' ? 1U : 4U);
    }
    EXPECT_EQ(escapeWord("node 1 root"), "node\\x201\\x20root");
    EXPECT_EQ(escapeWord("a\\x20\n\xff"), "a\\x5cx20\\x0a\\xff");
}

TEST(Names, pathsAsLsofPrintsThem)
{
    for (const char *const path : {"", "/srv/a shop~", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80/x"})
        EXPECT_EQ(escapePath(path), path);
    EXPECT_EQ(escapePath("\b\t\n\f\r"), "\\b\\t\\n\\f\\r");
    EXPECT_EQ(escapePath(std::string("\0\x01\x07\x0b\x0e\x1f", 6)), "^@^A^G^K^N^_");
    EXPECT_EQ(escapePath("\x7f\\"), "\\x7f\\\\");
    EXPECT_EQ(escapePath("\x80\xc3z\xff\xa9\xc3"), "\\x80\\xc3z\\xff\\xa9\\xc3");
    EXPECT_EQ(escapePath("\xc2\x85"), "\\xc2\\x85") << "not printable";
}

TEST(Names, spellingsOfOneProgram)
{
    const std::pair<const char *, const char *> spellings[] = {{"node", "node"},
                                                               {"nodejs", "node"},
                                                               {"node-22", "node"},
                                                               {"node-20.11", "node"},
                                                               {"node.exe", "node"},
                                                               {".ruby-wrapped", "ruby"},
                                                               {".nodejs-wrapped", "node"},
                                                               {".a-wrapped", "a"},
                                                               {"bunx", "bun"},
                                                               {"mariadbd", "mysqld"},
                                                               {"redis-check-rdb", "redis-server"},
                                                               {"node-", "node-"},
                                                               {"node-gyp", "node-gyp"},
                                                               {"node-22a", "node-22a"},
                                                               {"-wrapped", "-wrapped"},
                                                               {".-wrapped", ".-wrapped"},
                                                               {".exe", ".exe"},
                                                               {"Python.EXE", "Python"},
                                                               {"", ""}};
    for (const auto &[spelling, name] : spellings)
        EXPECT_EQ(foldName(spelling), name) << spelling;
}

TEST(Names, smallLetters)
{
    EXPECT_EQ(lowerCase("@AZ[`az{\xc3\x84"), "@az[`az{\xc3\x84");
}

TEST(Names, theKnownNamesAreThoseThatAreKept)
{
    for (const char *const name :
         {"node", "Node", "nodemon", "python3.11", "Python", "bundle", "DOTNET.exe", "Google",
          "nginx", "", "\235ocker", "doc\u212aer"}) {
        const tidewick::PortInfo record(1, QStringLiteral("1"),
                                        QString::fromStdString(escapeWord(name)),
                                        QStringLiteral("root"), QStringLiteral("localhost"));
        EXPECT_EQ(isKnownName(name), isDevelopmentProcess(record)) << name;
    }
}

TEST(Names, programsByTheirExecutable)
{
    using List = std::vector<std::string_view>;
    EXPECT_EQ(programName("/usr/bin/python3.11", false, {}), "python3.11");
    EXPECT_EQ(programName("/opt/a (deleted)/node (deleted)", false, {}), "node");
    EXPECT_EQ(programName("/opt/node (deleted)", true, {}), "node (deleted)");
    EXPECT_EQ(programName("/memfd:a/b (deleted)", false, {}), "a/b");
    EXPECT_EQ(programName("/usr/lib/ld-linux-x86-64.so.2", false, List{"ld", "/opt/bin/node", "x"}),
              "node");
    EXPECT_EQ(programName("/lib/ld-2.31.so", false,
                          List{"ld", "--library-path", "/a/b", "--inhibit-cache", "/bin/php"}),
              "php");
    EXPECT_EQ(programName("/lib/ld-2.31.so", false, List{"ld", "--library-path"}), "ld-2.31.so");
    EXPECT_EQ(programName("/usr/bin/ld-tool", false, List{"ld", "node"}), "ld-tool");
    EXPECT_EQ(programName("/usr/bin/tool.so.2", false, List{"ld", "node"}), "tool.so.2");
}

TEST(Names, aLoadersOptionsAndTheirValuesAreNotItsProgram)
{
    using List = std::vector<std::string_view>;
    for (const char *const option : {"--library-path", "--inhibit-rpath", "--audit", "--preload",
                                     "--argv0", "--glibc-hwcaps-mask", "--glibc-hwcaps-prepend"}) {
        EXPECT_EQ(programName("/lib/ld-2.31.so", false, List{"ld", option, "value", "/bin/php"}),
                  "php")
            << option;
    }
    EXPECT_EQ(programName("/lib/ld-2.31.so", false, List{"ld", "--inhibit-cache"}), "ld-2.31.so");
}

TEST(Names, hiddenProgramsByTheirMainThread)
{
    EXPECT_EQ(hiddenProgramName("redis-server"), "redis-server");
    EXPECT_EQ(hiddenProgramName("mariadbd"), "mysqld");
    EXPECT_EQ(hiddenProgramName("MainThread"), "node");
    EXPECT_EQ(hiddenProgramName("node-MainThread"), "node");
    EXPECT_EQ(hiddenProgramName("DomainThread"), "DomainThread");
    EXPECT_EQ(hiddenProgramName(""), "");
}
