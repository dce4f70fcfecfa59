// An id that the package service says a package has.

#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "update/PackageId.h"

using namespace tidewick;

QByteArray validInput(Random &random)
{
    return oneOf(random, {"tidewick", "libqt6core6", "x"}) + ';' + numberBelow(random, 99) +
           oneOf(random, {".0-1", ":1.2~rc1", ""}) + ';' + oneOf(random, {"amd64", "all", ""}) +
           ';' + oneOf(random, {"installed", "debian-stable-main", "auto:local", ""});
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(bytesOf(data, size));
    const auto id = parsePackageId(text);
    if (!id) {
        countRecords(0);
        promise(text.count(u';') != 3 || text.size() > 1000 || text.startsWith(u';') ||
                    text.contains(QStringLiteral(";;")),
                "what has the shape of an id is one");
        return 0;
    }
    countRecords(1);
    promise(id->text() == text, "an id is what was said");
    promise(!id->name.isEmpty() && !id->version.isEmpty(), "an id names a package and its version");
    promise(!(id->name + id->version + id->architecture + id->data).contains(u';'),
            "an id has four parts");
    return 0;
}
