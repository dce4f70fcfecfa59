#pragma once

#include <QString>

namespace tidewick
{

/// `text` with a space in place of each character that ends a line, turns the direction of what
/// stands beside it, or cannot be seen, and with four combining marks on a letter at most. Text of
/// another process is shown only after this.
QString visibleText(const QString &text);

/// The same for a field of several lines: line feeds stay.
QString visibleLines(const QString &text);

} // namespace tidewick
