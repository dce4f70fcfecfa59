#pragma once

#include <QString>

#include <optional>

namespace tidewick
{

/// The path that lsof printed as `printed` (lsof(8), "OUTPUT"). Nothing where that may be another
/// one: it prints a control character as a caret and a letter, and a caret as it is. Nothing also
/// where the path is no text.
std::optional<QString> unescapedPath(QStringView printed);

} // namespace tidewick
