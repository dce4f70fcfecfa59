// The user's autostart entry is whatever somebody wrote there.

#include "platform/DesktopEntry.h"
#include "tests/fuzz/Fuzz.h"

using namespace tidewick;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 2);
    const QString key = QStringLiteral("Exec");
    const QString value = QString::fromUtf8(texts[1]);
    DesktopEntry entry(texts[0]);
    entry.value(key);
    entry.setValue(key, quotedForExec(value));
    promise(DesktopEntry(entry.toText()).value(key) == quotedForExec(value),
            "what is set is read back");
    entry.remove(key);
    promise(!DesktopEntry(entry.toText()).value(key), "what is removed is gone");
    return 0;
}
