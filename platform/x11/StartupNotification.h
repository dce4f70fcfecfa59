#pragma once

#include <QByteArray>
#include <QList>

namespace tidewick
{

/// Tells the desktop that the start or click with this id has been answered, so that it no longer
/// shows a busy pointer. Does nothing if the windows are not on an X server, where the id is the
/// token of the window's activation.
void endStartup(const QByteArray &id);

/// `text` with its final zero in the pieces of 20 bytes that the X messages carry; see
/// freedesktop.org's Startup Notification Protocol.
QList<QByteArray> startupPieces(const QByteArray &text);

/// The text that ends the sequence `id`.
QByteArray endOfStartup(const QByteArray &id);

} // namespace tidewick
