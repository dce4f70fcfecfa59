// A process writes its own command line.

#include "scan/CommandMetadata.h"
#include "scan/ServiceDetection.h"
#include "scan/ToolText.h"
#include "tests/fuzz/Fuzz.h"

using namespace tidewick;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 2);
    const QString command = QString::fromUtf8(texts[0]);
    const QString line = QString::fromUtf8(texts[1]);
    const auto metadata = extractMetadata(line, command);
    for (auto fact = metadata.begin(); fact != metadata.end(); ++fact) {
        promise(fact.key() == QStringLiteral("framework") ||
                    fact.key() == QStringLiteral("script") ||
                    fact.key() == QStringLiteral("container"),
                "the known keys only");
        promise(fact.key() != QStringLiteral("script") || line.contains(fact.value()),
                "a script is a word of the command line");
    }
    detectServiceType(static_cast<qint64>(size), command, line);
    return 0;
}
