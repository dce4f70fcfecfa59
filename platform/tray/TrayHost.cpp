#include "platform/tray/TrayHost.h"

#include <algorithm>
#include <array>

namespace tidewick
{
namespace
{

struct KnownHost
{
    QLatin1String beginning; // of the process's name
    TrayHost host;
};

constexpr TrayHost gnome{.number = NumberStyle::label, .countsPixels = true};
constexpr TrayHost wide{.number = NumberStyle::wide};
constexpr TrayHost lxqt{.keys = KeyNames::qt};
constexpr TrayHost plasma{.keys = KeyNames::qt, .countsPixels = true};

/// The indicator service, whose bars draw a menu and nothing else.
constexpr TrayHost menuOnly{
    .number = NumberStyle::label, .takesPixels = false, .activates = false, .tellsOfBars = false};

const auto knownHosts = std::to_array<KnownHost>({
    {QLatin1String("gnome-shell"), gnome},
    {QLatin1String("ayatana-"), menuOnly},
    // MATE would show a label too, but drops the icon of an item that has one.
    {QLatin1String("mate-panel"), wide},      // the applet in the panel's own process
    {QLatin1String("notification-ar"), wide}, // and in one of its own
    {QLatin1String("waybar"), wide},
    {QLatin1String("lxqt-panel"), lxqt},
    {QLatin1String("plasmashell"), plasma},
    {QLatin1String("kded"), plasma},
});

} // namespace

TrayHost trayHost(const QString &processName)
{
    const auto known =
        std::find_if(knownHosts.begin(), knownHosts.end(), [&processName](const KnownHost &one) {
            return processName.startsWith(one.beginning);
        });
    return known == knownHosts.end() ? TrayHost{} : known->host;
}

} // namespace tidewick
