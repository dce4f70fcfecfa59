#pragma once

namespace tidewick
{

/// Checks for updates of this program and shows its own dialogs. Main thread only.
class Updater
{
public:
    virtual ~Updater() = default;

    /// The user asked: check now; says at once that it is checking. Starts no second check while
    /// one runs, nor one during an installation: it shows what runs.
    virtual void checkForUpdates() = 0;
    /// False while a check, or an installation, runs.
    virtual bool canCheckForUpdates() const = 0;
};

} // namespace tidewick
