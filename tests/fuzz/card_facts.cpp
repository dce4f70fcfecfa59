// What a card shows of a record, whatever the process calls itself: texts separated by NULs.

#include "tests/fuzz/Fuzz.h"
#include "views/card/CardFacts.h"
#include "views/panel/PortListModel.h"

#include <cstring>

using namespace tidewick;

namespace
{

double numberOf(const QByteArray &text)
{
    double value = 0;
    std::memcpy(&value, text.constData(), std::min<size_t>(size_t(text.size()), sizeof value));
    return value;
}

void checkText(const QString &text)
{
    constexpr qsizetype longest = 255 + 1; // and the mark of what was left out
    promise(text.size() <= longest, "a text is truncated");
    promise(isSingleLine(text), "a text is plain");
    promise(text == text.trimmed(), "a text has no blanks around it");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 8);
    PortInfo record(texts[0].toInt(), QString::fromUtf8(texts[1]), QString::fromUtf8(texts[2]),
                    QString::fromUtf8(texts[3]), QStringLiteral("*"));
    record.fullCommand = QString::fromUtf8(texts[4]);
    record.workingDirectory = QString::fromUtf8(texts[5]);
    record.metadata.insert(QStringLiteral("script"), QString::fromUtf8(texts[6]));
    record.memoryUsage = numberOf(texts[7]);
    record.cpuUsage = numberOf(texts[7].mid(sizeof(double)));
    CardFacts facts;
    facts.setRecord(QVariant::fromValue(record));

    promise(!facts.title().isEmpty(), "a card has a title");
    for (const QString &text : {facts.title(), facts.pidFigure(), facts.script(),
                                facts.directoryName(), facts.framework(), facts.uptime()})
        checkText(text);
    promise(isSingleLine(facts.sentence()) && facts.sentence().contains(facts.title()),
            "a screen reader hears a plain sentence with the title");
    promise(facts.memoryFigure().isEmpty() || record.memoryUsage > 0, "no memory is no figure");
    promise(facts.cpuFigure().isEmpty() || record.cpuUsage > 0.1, "no load is no figure");
    promise((facts.memoryLevel() == CardFacts::High) == (record.memoryUsage >= 2048) &&
                (facts.cpuLevel() == CardFacts::High) == (record.cpuUsage >= 80),
            "a high figure looks high");
    promise(facts.pid() == record.pid(), "the kill gets the process id as it is");
    return 0;
}
