#include "platform/session/ShellLayout.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace tidewick
{
namespace
{

const QString service = QStringLiteral("org.gnome.Mutter.DisplayConfig");
const QString path = QStringLiteral("/org/gnome/Mutter/DisplayConfig");
constexpr uint logicalLayout = 1; // 2 is the physical one, in pixels
constexpr int answerTimeoutMs = 1000;

} // namespace

bool shellCountsPoints(const QDBusConnection &bus)
{
    auto call =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetCurrentState"));
    call.setAutoStartService(false);
    // A serial number, the monitors, the logical monitors, and the properties of all.
    const QDBusMessage state = bus.call(call, QDBus::Block, answerTimeoutMs);
    const auto properties = qdbus_cast<QVariantMap>(state.arguments().value(3));
    return properties.value(QStringLiteral("layout-mode")).toUInt() == logicalLayout;
}

} // namespace tidewick
