#pragma once

namespace tidewick
{

/// Checks for updates of this program and shows its own dialogs. Main thread only.
class Updater
{
public:
    virtual ~Updater() = default;

    /// Checks now, because the user asked, and shows at once that it does. If a check or an
    /// installation is running, it shows that one and starts no other.
    virtual void checkForUpdates() = 0;
    /// False while a check or an installation is running.
    virtual bool canCheckForUpdates() const = 0;
};

} // namespace tidewick
