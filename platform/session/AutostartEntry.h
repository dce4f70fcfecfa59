#pragma once

#include "platform/LoginItem.h"

namespace tidewick
{

/// Set to 1 in the environment of a program that the session started, and not the user.
inline constexpr const char *autostartVariable = "TIDEWICK_AUTOSTARTED";

/// The login item as an autostart entry (freedesktop.org's Desktop Application Autostart
/// Specification): the user's file stands before the system's of the same name. Nothing is kept
/// here; each call reads the files anew. An entry that cannot be read whole is never written back.
class AutostartEntry : public LoginItem
{
public:
    /// `program` is the absolute path that the session is to start.
    explicit AutostartEntry(QString program);

    LoginItemStatus status() const override;
    /// Keeps what the user added to the entry, but nothing that would hold the program back.
    std::optional<QString> registerItem() override;
    /// Deletes the user's entry, or hides it where the system's would come back.
    std::optional<QString> unregisterItem() override;

private:
    QString m_program;
};

} // namespace tidewick
