#pragma once

#include <QString>

#include <optional>

namespace tidewick
{

/// Whether the desktop starts the program when the user logs in.
enum class LoginItemStatus { notRegistered, enabled, requiresApproval, notFound };

/// The program's registration with the desktop's session. Main thread only.
class LoginItem
{
public:
    virtual ~LoginItem() = default;

    virtual LoginItemStatus status() const = 0;
    /// Both return the system's error text, or nothing on success.
    virtual std::optional<QString> registerItem() = 0;
    virtual std::optional<QString> unregisterItem() = 0;
};

} // namespace tidewick
