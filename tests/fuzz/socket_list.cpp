// lsof's output is any text.

#include "scan/SocketScan.h"
#include "scan/ToolText.h"
#include "tests/fuzz/Fuzz.h"

#include <limits>

using namespace tidewick;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto text = decodeUtf8(bytesOf(data, size));
    if (!text)
        return 0;
    qint64 last = std::numeric_limits<qint64>::min(); // lsof prints no sign, but one would be read
    for (const PortInfo &record : parsePortInfo(*text)) {
        promise(record.port() > last, "each port once, ascending");
        promise(record.address() == QStringLiteral("localhost"), "every address is localhost");
        promise(text->contains(record.pid()) && text->contains(record.command()),
                "process and name stand in the text");
        promise(!record.pid().isEmpty() && !record.pid().contains(QLatin1Char(' ')),
                "a process id is one word");
        isDevelopmentProcess(record);
        last = record.port();
    }
    return 0;
}
