// An id that the package service says a package has.

#include "tests/fuzz/Fuzz.h"
#include "update/PackageId.h"

using namespace tidewick;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(bytesOf(data, size));
    const auto id = parsePackageId(text);
    if (!id) {
        promise(text.count(u';') != 3 || text.size() > 1000 || text.startsWith(u';') ||
                    text.contains(QStringLiteral(";;")),
                "what has the shape of an id is one");
        return 0;
    }
    promise(id->text() == text, "an id is what was said");
    promise(!id->name.isEmpty() && !id->version.isEmpty(), "an id names a package and its version");
    promise(!(id->name + id->version + id->architecture + id->data).contains(u';'),
            "an id has four parts");
    return 0;
}
