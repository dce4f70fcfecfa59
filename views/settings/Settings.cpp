#include "views/settings/Settings.h"

#include <cstdio>
#include <utility>

namespace tidewick
{

Settings::Settings(Registration registerItem, Registration unregisterItem, QObject *parent)
    : QObject(parent),
      m_registerItem(std::move(registerItem)),
      m_unregisterItem(std::move(unregisterItem))
{
}

void Settings::setLaunchAtLogin(bool enabled)
{
    const auto error = enabled ? m_registerItem() : m_unregisterItem();
    if (!error)
        return;
    std::printf("Failed to %s launch at login: %s\n", enabled ? "enable" : "disable",
                qUtf8Printable(*error));
    std::fflush(stdout);
}

} // namespace tidewick
