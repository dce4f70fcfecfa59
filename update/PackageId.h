#pragma once

#include <QString>

#include <optional>

namespace tidewick
{

/// "name;version;arch;data" (PkPackageId).
struct PackageId
{
    QString name;
    QString version;
    QString architecture;
    QString data;

    QString text() const;
    bool operator==(const PackageId &) const = default;
};

/// Nothing if `text` is not such an id or is unreasonably long.
std::optional<PackageId> parsePackageId(const QString &text);

} // namespace tidewick
