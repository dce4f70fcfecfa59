// What the supplied lsof prints, the scan reads, whatever the processes call themselves. Each text
// is a process: two bytes of its port, one that chooses its address, its name.

#include "libexec/names/EscapedText.h"
#include "libexec/rows/SocketTable.h"
#include "scan/SocketScan.h"
#include "tests/fuzz/Fuzz.h"
#include "text/Utf8.h"

#include <algorithm>
#include <map>

using namespace tidewick;

namespace
{

libexec::ListeningSocket socketOf(const QByteArray &text)
{
    libexec::ListeningSocket socket;
    socket.port = uint16_t(uint8_t(text[0]) << 8U | uint8_t(text[1]));
    const auto kind = uint8_t(text[2]) % 5;
    socket.isIpv6 = kind > 2;
    if (kind == 1 || kind == 2) { // 127.0.0.1, and 127.0.0.2 which nobody asks
        socket.address[0] = 127;
        socket.address[3] = uint8_t(kind);
    } else if (kind == 3) {
        socket.address[15] = 1;
    }
    return socket;
}

bool isShown(const libexec::ListeningSocket &socket)
{
    return socket.address[3] != 2;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    libexec::SocketHolders found;
    std::vector<libexec::ListeningSocket> sockets;
    std::map<qint64, size_t> first;
    for (const QByteArray &text : pieces(data, size, 0)) {
        if (text.size() < 4) // a process has a name, if only "?"
            continue;
        const size_t index = sockets.size();
        sockets.push_back(socketOf(text));
        found.processes.push_back({int(index) + 1, 0, text.mid(3).toStdString()});
        found.holders.push_back({index, index, uint8_t(text[2]) % 2 == 0 ? 3 : -1});
        if (isShown(sockets.back()))
            first.try_emplace(sockets.back().port, index);
    }
    const std::string table = libexec::socketTable(found, sockets);
    promise(std::count(table.begin(), table.end(), '\n') ==
                (sockets.empty() ? 0 : ptrdiff_t(sockets.size()) + 1),
            "a line each, and a header where there is one");
    const auto text = decodeUtf8(QByteArray::fromStdString(table));
    promise(text.has_value(), "a table is text");
    const auto records = parsePortInfo(*text);
    promise(size_t(records.size()) == first.size(), "each port is read, and none besides");
    auto expected = first.begin();
    for (const PortInfo &record : records) {
        const libexec::Process &process = found.processes[expected->second];
        promise(record.port() == expected->first && record.pid() == QString::number(process.pid) &&
                    record.command() ==
                        QString::fromStdString(libexec::escapeWord(process.command)),
                "a row is read as it was written");
        ++expected;
    }
    return 0;
}
