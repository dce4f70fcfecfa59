// What the package service and the package sources say, which an update's windows show.

#include "tests/fuzz/Fuzz.h"
#include "update/UpdateFailure.h"

#include <QDBusMessage>

using namespace tidewick;

namespace
{

void checkText(const QString &text, qsizetype limit)
{
    promise(text.size() <= limit + 1, "a text is truncated");
    promise(isSingleLine(text), "a text is plain");
}

void checkFailure(const UpdateFailure &failure)
{
    promise(!sentence(failure.error).isEmpty(), "every failure has its sentence");
    checkText(QString(failure.details).remove(u'\n'), 4000);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 2);
    const QString name = QString::fromUtf8(texts[0]);
    const QString text = QString::fromUtf8(texts[1]);
    checkText(asLine(text), 200);
    const uint code = texts[0].isEmpty() ? 0 : uint8_t(texts[0][0]);
    checkFailure(failureOfErrorCode(code, text));
    checkFailure(failureOfExit(code));
    checkFailure(failureOfCall(
        QDBusError(QDBusMessage::createError(QStringLiteral("org.freedesktop.") + name, text))));
    return 0;
}
