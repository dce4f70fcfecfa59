// What /proc tells of a process, most of which the process may choose. Four texts, separated by the
// record separator (0x1e): stat, status, the command line, the executable's path.

#include "libexec/cells/NumberCells.h"
#include "libexec/cells/PrintedText.h"
#include "libexec/holders/DockerProxy.h"
#include "libexec/names/EscapedText.h"
#include "libexec/names/KnownNames.h"
#include "libexec/names/ProgramName.h"
#include "libexec/proc/Arguments.h"
#include "libexec/proc/Words.h"
#include "scan/SocketScan.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "tests/libexec/AddedText.h"
#include "text/EscapedPath.h"
#include "text/Utf8.h"

#include <clocale>
#include <cmath>

#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

bool isPrintable(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x7f;
}

bool isPrintable(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return isPrintable(uint8_t(c)); });
}

void checkStat(const std::string &text)
{
    if (const auto stat = parseStat(text)) {
        promise(stat->comm.size() + 2 <= text.size(), "a name is a part of the text");
        const double seconds = lifeTime(*stat, text, 100);
        promise(std::isfinite(seconds) && seconds >= 0, "nothing starts after now");
        promise(isPrintable(addedText([&](TextBuffer &line) {
                    addPercentage(line, *stat, seconds, 100);
                    addElapsed(line, uint64_t(seconds));
                })),
                "cells are plain");
    }
    const std::string whole = "77 (" + text + ") S 42 0 0 0 0 0 0 0 0 0 31 12 0 0 20 0 1 0 5150 1";
    const auto forged = parseStat(whole);
    promise(forged && forged->comm == text && forged->state == 'S' && forged->parent == 42 &&
                forged->userTime == 31 && forged->systemTime == 12 && forged->startTime == 5150,
            "no name forges a field");
}

void checkStatus(const std::string &text)
{
    const auto value = statusValue(text, "VmRSS");
    promise(!value || value->find('\n') == std::string_view::npos, "a value is one line");
    promise(
        !value || value->empty() ||
            (value->find_first_of(" \t") != 0 && value->find_last_of(" \t") != value->size() - 1),
        "a value has no blanks around it");
    const std::string cell = addedText([&](TextBuffer &line) { addResident(line, text); });
    promise(cell.size() >= 5 && cell.find_first_not_of("0123456789 ") == std::string::npos,
            "a size is a number");
}

/// A text as ps and lsof print it in the locale of now, which is UTF-8 or not.
void checkPrinted(const std::string &text, bool isUtf8)
{
    const std::string line = addedText([&](TextBuffer &line) {
        line.add(text);
        joinArguments(line);
    });
    const std::string cell = addedText([&](TextBuffer &cell) { addPrinted(cell, line, isUtf8); });
    for (const std::string &printed : {cell, escapePath(text)}) {
        for (const char c : printed) {
            const auto byte = uint8_t(c);
            promise(isPrintable(byte) || (isUtf8 && byte >= 0x80), "what is printed is plain");
        }
        promise(tidewick::decodeUtf8(QByteArray::fromStdString(printed)).has_value(),
                "what is printed is read");
    }
}

/// A path is read back, or not at all.
void checkPath(const std::string &path)
{
    const auto text = tidewick::decodeUtf8(QByteArray::fromStdString(path));
    const auto back = tidewick::unescapedPath(QString::fromStdString(escapePath(path)));
    promise(!back || back == text, "no path is read as another");
    const bool isPlain =
        path.find('^') == std::string::npos && escapePath(path).find('^') == std::string::npos;
    promise(back || !text || !isPlain, "a path without a caret is read");
}

void checkLocales(const std::string &text)
{
    static const locale_t plain = newlocale(LC_CTYPE_MASK, "C", nullptr);
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    uselocale(plain);
    checkPrinted(text, false);
    uselocale(utf8);
    checkPrinted(text, true);
    checkPath(text);
    uselocale(LC_GLOBAL_LOCALE);
}

void checkName(const std::string &name)
{
    const std::string word = escapeWord(name);
    promise(isPrintable(word) && word.find(' ') == std::string::npos, "a word is one word");
    std::string plain;
    for (size_t i = 0; i < word.size(); ++i) {
        plain += word[i] == '\\' ? char(std::stoi(word.substr(i + 2, 2), nullptr, 16)) : word[i];
        i += word[i] == '\\' ? 3 : 0;
    }
    promise(plain == name, "a word can be read back");
    const tidewick::PortInfo record(1, QStringLiteral("1"), QString::fromStdString(word),
                                    QStringLiteral("root"), QStringLiteral("localhost"));
    promise(isKnownName(name) == tidewick::isDevelopmentProcess(record),
            "the names that are looked for are those that are kept");
}

void checkForwarder(const std::string &text)
{
    const auto asked = forwardedSocket(splitArguments(text));
    promise(!asked || text.find("host-port") != std::string::npos, "no proxy without a port");
    promise(!asked || matchForwarder(*asked, *asked) == ProxyMatch::exact,
            "a proxy fits what it was asked for");
}

} // namespace

QByteArray validInput(Random &random)
{
    const QByteArray name = oneOf(random, {"node", "a) S (b", "tmux: server", "\xc3\xa9"});
    return numberBelow(random, 99'999) + " (" + name + ") " + oneOf(random, {"S", "R", "Z"}) + ' ' +
           numberBelow(random, 9999) + " 0 0 0 0 0 0 0 0 0 " + numberBelow(random, 99'999) + ' ' +
           numberBelow(random, 99'999) + " 0 0 20 0 1 0 " + numberBelow(random, 99'999) + " 1\n" +
           '\x1e' + "Name:\t" + name + "\nVmRSS:\t  " + numberBelow(random, 99'999'999) + " kB\n" +
           '\x1e' + "/usr/bin/docker-proxy" + '\0' + "-host-ip" + '\0' + "127.0.0.1" + '\0' +
           "-host-port" + '\0' + numberBelow(random, 65'536) + '\0' + '\x1e' +
           oneOf(random, {"/usr/bin/node", "/tmp/a b (deleted)", "/opt/caf\xc3\xa9"});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 4, '\x1e');
    countRecords(parseStat(texts[0].toStdString()) ? 1 : 0);
    checkStat(texts[0].toStdString());
    checkStatus(texts[1].toStdString());

    const std::string line = texts[2].toStdString();
    std::string joined;
    const auto arguments = splitArguments(line);
    for (const std::string_view argument : arguments)
        joined += std::string(argument) + '\0';
    promise(joined == line || joined == line + '\0', "the arguments are all there");
    checkLocales(line);

    const std::string path = texts[3].toStdString();
    checkLocales(path);
    for (const bool isReallyThere : {false, true})
        checkName(programName(path, isReallyThere, arguments));
    checkName(hiddenProgramName(path));
    promise(socketInode("socket:[" + path + ']') == parseNumber(path).value_or(0),
            "a socket is a number");
    checkForwarder(line);
    return 0;
}
