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

    /// In the default browser.
    virtual void openUrl(const QUrl &url) = 0;
    /// In the file manager. A directory that is gone does nothing.
    virtual void revealDirectory(const QString &path) = 0;
};

} // namespace tidewick
