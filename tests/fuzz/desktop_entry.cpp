// The user's autostart entry is whatever somebody wrote there.

#include "platform/session/DesktopEntry.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"

using namespace tidewick;

QByteArray validInput(Random &random)
{
    QByteArray entry;
    for (auto groups = 1 + random() % 2; groups > 0; --groups) {
        entry += oneOf(random, {"[Desktop Entry]\n", "[Desktop Action open]\n", "# a note\n"});
        for (auto lines = random() % 6; lines > 0; --lines)
            entry += oneOf(random, {"Exec", "Hidden", "Name", "Name[fi]", "Type", "Hidden "}) +
                     oneOf(random, {"=", " = "}) +
                     oneOf(random, {"true", "false", "Application", "\"/a b/x\" %u", ""}) + '\n';
    }
    return entry + '\0' + oneOf(random, {"/usr/bin/tidewick", "/a b/\"$`\\", ""});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 2);
    const QString key = QStringLiteral("Exec");
    const QString otherKey = QStringLiteral("Hidden");
    const QString value = QString::fromUtf8(texts[1]);
    DesktopEntry entry(texts[0]);
    const auto other = entry.value(otherKey);
    countRecords((other ? 1 : 0) + (entry.value(key) ? 1 : 0));
    promise(entry.toText().startsWith(texts[0]) || (texts[0] + '\n').startsWith(entry.toText()),
            "what nobody sets is kept");
    promise(DesktopEntry(entry.toText()).toText() == entry.toText(), "a text is kept as it is");
    entry.setValue(key, quotedForExec(value));
    promise(DesktopEntry(entry.toText()).value(key) == quotedForExec(value),
            "what is set is read back");
    promise(entry.value(otherKey) == other, "what is set changes no other key");
    entry.remove(key);
    promise(!DesktopEntry(entry.toText()).value(key), "what is removed is gone");
    promise(entry.value(otherKey) == other, "what is removed takes no other key along");
    return 0;
}
