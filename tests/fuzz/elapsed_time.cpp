// ps prints how long a process has lived; any text may stand there.

#include "libexec/cells/NumberCells.h"
#include "scan/Enrichment.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "tests/libexec/AddedText.h"

#include <QRegularExpression>

#include <cmath>
#include <cstring>

using namespace tidewick;

namespace
{

/// The seconds in a text of ps's own form; nothing for any other.
std::optional<double> secondsIn(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:(?:([0-9]+)-)?([0-9]+):)?([0-9]+):([0-9]+)\\z"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) {
        return match.captured(group).toLongLong();
    };
    return double(number(1) * 86400) + double((number(2) * 60 + number(3)) * 60 + number(4));
}

} // namespace

QByteArray validInput(Random &random)
{
    const QByteArray minutes = numberBelow(random, 60) + ':' + numberBelow(random, 60);
    if (random() % 3 == 0)
        return minutes;
    const QByteArray hours = numberBelow(random, 24) + ':' + minutes;
    return random() % 2 == 0 ? hours : numberBelow(random, 999) + '-' + hours;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    if (!isBeyondAnyLife(bytes)) {
        const QString text = QString::fromUtf8(bytes);
        const double seconds = parseElapsedTime(text);
        countRecords(secondsIn(text) ? 1 : 0);
        promise(std::isfinite(seconds) && std::isfinite(parseHMS(text)), "a time is a number");
        promise(seconds == secondsIn(text).value_or(seconds), "a time is the sum of its parts");
    }
    uint64_t life = 0;
    std::memcpy(&life, data, std::min(size, sizeof life));
    life %= 100'000'000'000; // some thousand years
    const std::string printed =
        addedText([&](libexec::TextBuffer &line) { libexec::addElapsed(line, life); });
    promise(printed.size() >= 11, "the column is eleven wide");
    promise(parseElapsedTime(QString::fromStdString(printed).trimmed()) == double(life),
            "what our ps prints is read back");
    return 0;
}
