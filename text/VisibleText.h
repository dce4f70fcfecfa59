#pragma once

#include <QString>

namespace tidewick
{

/// `text` with a space in place of each character that ends a line, turns the direction of what
/// stands beside it, or cannot be seen.
QString visibleText(QString text);

} // namespace tidewick
