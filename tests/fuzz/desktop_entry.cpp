// The user's autostart entry is whatever somebody wrote there.

#include "platform/session/DesktopEntry.h"
#include "tests/fuzz/Fuzz.h"

using namespace tidewick;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 2);
    const QString key = QStringLiteral("Exec");
    const QString otherKey = QStringLiteral("Hidden");
    const QString value = QString::fromUtf8(texts[1]);
    DesktopEntry entry(texts[0]);
    const auto other = entry.value(otherKey);
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
