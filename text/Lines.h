#pragma once

#include <QList>
#include <QStringView>

namespace tidewick
{

/// The lines of `text`. Each of LF, VT, FF, CR, NEL, LS and PS ends a line by itself, so that CR
/// before LF makes an empty line. The text after the last line end is a line too.
QList<QStringView> splitLines(QStringView text);

} // namespace tidewick
