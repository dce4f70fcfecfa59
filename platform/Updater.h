#pragma once

namespace tidewick
{

/// Checks for updates of this program and shows its own dialogs. Main thread only.
class Updater
{
public:
    virtual ~Updater() = default;

    /// The user asked: check now. Does nothing while a check runs.
    virtual void checkForUpdates() = 0;
    /// False while a check, or an installation, runs.
    virtual bool canCheckForUpdates() const = 0;
};

} // namespace tidewick
