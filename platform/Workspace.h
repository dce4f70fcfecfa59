#pragma once

#include <QString>
#include <QUrl>

namespace tidewick
{

/// What the desktop does for the user on the program's behalf. Main thread only.
class Workspace
{
public:
    virtual ~Workspace() = default;

    /// Opens `url` in the default browser.
    virtual void openUrl(const QUrl &url) = 0;
    /// Shows the directory in the file manager. Does nothing if it no longer exists.
    virtual void revealDirectory(const QString &path) = 0;
};

} // namespace tidewick
