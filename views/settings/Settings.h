#pragma once

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <functional>
#include <optional>

namespace tidewick
{

/// What the settings view asks of the program. Main thread only.
class Settings : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program makes the one there is.")

public:
    /// Changes the program's registration as a login item; returns the system's text of what went
    /// wrong, or nothing.
    using Registration = std::function<std::optional<QString>()>;

    Settings(Registration registerItem, Registration unregisterItem, QObject *parent = nullptr);

    /// A failure is one line on standard output and nothing else: the toggle keeps what the user
    /// chose.
    Q_INVOKABLE void setLaunchAtLogin(bool enabled);

private:
    Registration m_registerItem;
    Registration m_unregisterItem;
};

} // namespace tidewick
