// A process writes its own name and command line, and listens where it likes.

#include "scan/CommandMetadata.h"
#include "scan/ServiceDetection.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "text/Numbers.h"

using namespace tidewick;

namespace
{

QString withCapitals(QString text)
{
    for (QChar &character : text) {
        if (character >= QLatin1Char('a') && character <= QLatin1Char('z'))
            character = QChar(character.unicode() - u'a' + u'A');
    }
    return text;
}

void checkMetadata(const QString &line, const QString &command)
{
    const auto metadata = extractMetadata(line, command);
    for (auto fact = metadata.begin(); fact != metadata.end(); ++fact) {
        promise(fact.key() == QStringLiteral("framework") ||
                    fact.key() == QStringLiteral("script") ||
                    fact.key() == QStringLiteral("container"),
                "the known keys only");
        if (fact.key() == QStringLiteral("script"))
            promise(line.split(QLatin1Char(' ')).contains(fact.value()),
                    "a script is a word of the command line");
        else
            promise(!fact.value().isEmpty() && isSingleLine(fact.value()),
                    "all other facts are names of ours");
    }
}

} // namespace

QByteArray validInput(Random &random)
{
    const QByteArray command =
        oneOf(random, {"node", "python3", "ruby", "php", "java", "go", "dotnet", "docker-pr"});
    QByteArray line = "/usr/bin/" + command;
    for (auto words = random() % 4; words > 0; --words)
        line +=
            ' ' + oneOf(random, {"next", "dev", "vite", "manage.py", "runserver", "server.js",
                                 "app.py", "-jar", "spring-boot.jar", "--port", "rails", "flask"});
    return command + '\0' + line + '\0' + numberBelow(random, 65'536);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QList<QByteArray> texts = pieces(data, size, 3);
    const QString command = QString::fromUtf8(texts[0]);
    const QString line = QString::fromUtf8(texts[1]);
    const qint64 port = parseInteger(QString::fromUtf8(texts[2])).value_or(41234);
    checkMetadata(line, command);
    countRecords(size_t(extractMetadata(line, command).size()));
    promise(detectServiceType(port, command, line) ==
                detectServiceType(port, withCapitals(command), withCapitals(line)),
            "the case of a letter makes no other service");
    return 0;
}
