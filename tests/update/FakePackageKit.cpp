#include "tests/update/FakePackageKit.h"

#include "tests/support/PrivateBus.h"
#include "update/PackageKitTransaction.h"

#include <QDBusObjectPath>

using namespace tidewick;

FakeTransaction::FakeTransaction(QDBusConnection bus, QString path)
    : m_bus(std::move(bus)), m_path(std::move(path))
{
}

void FakeTransaction::signal(const QString &name, const QVariantList &arguments) const
{
    QDBusMessage message =
        QDBusMessage::createSignal(m_path, packagekit::transactionInterface, name);
    message.setArguments(arguments);
    m_bus.send(message);
}

void FakeTransaction::package(uint info, const QString &id, const QString &summary) const
{
    signal(QStringLiteral("Package"), {info, id, summary});
}

void FakeTransaction::errorCode(uint code, const QString &details) const
{
    signal(QStringLiteral("ErrorCode"), {code, details});
}

void FakeTransaction::set(const QVariantMap &properties, const QString &interface) const
{
    QDBusMessage message =
        QDBusMessage::createSignal(m_path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    message << interface << properties << QStringList();
    m_bus.send(message);
}

void FakeTransaction::finish(uint exit) const
{
    signal(QStringLiteral("Finished"), {exit, 12U});
    signal(QStringLiteral("Destroy"), {});
}

void FakeTransaction::fail(uint code, const QString &details) const
{
    errorCode(code, details);
    finish(2);
}

FakePackageKit::FakePackageKit(const QDBusConnection &bus) : m_bus(bus)
{
    m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    m_bus.registerService(packagekit::service);
}

FakePackageKit::~FakePackageKit()
{
    m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
}

void FakePackageKit::on(const QString &method, const Behaviour &behaviour)
{
    m_behaviours.insert(method, behaviour);
}

void FakePackageKit::refuse(const QString &method, const QString &error)
{
    m_refusals.insert(method, error);
}

void FakePackageKit::ignore(const QString &method)
{
    m_ignored.append(method);
}

void FakePackageKit::signal(const char *name)
{
    m_bus.send(
        QDBusMessage::createSignal(packagekit::path, packagekit::interface, QLatin1String(name)));
}

void FakePackageKit::die()
{
    m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
    PrivateBus::disconnect(m_bus);
    m_bus = QDBusConnection(QString()); // it closes with its last holder
    m_byPath.clear();
    m_byMethod.clear();
}

std::shared_ptr<FakeTransaction> FakePackageKit::transaction(const QString &method) const
{
    return m_byMethod.value(method);
}

QString FakePackageKit::introspect(const QString & /*path*/) const
{
    return {};
}

void FakePackageKit::answer(const QDBusMessage &message, const QVariantList &arguments)
{
    m_bus.send(message.createReply(arguments));
}

bool FakePackageKit::handleMessage(const QDBusMessage &message,
                                   const QDBusConnection & /*connection*/)
{
    if (m_ignored.contains(message.member())) {
        message.setDelayedReply(true);
        return true;
    }
    if (m_refusals.contains(message.member())) {
        m_bus.send(message.createErrorReply(m_refusals.value(message.member()),
                                            QStringLiteral("refused by the test")));
        return true;
    }
    if (const auto one = m_byPath.value(message.path()))
        callTransaction(message, one);
    else
        callService(message);
    return true;
}

void FakePackageKit::callService(const QDBusMessage &message)
{
    if (message.member() == QStringLiteral("GetTimeSinceAction")) {
        constexpr uint refreshCache = 13; // PK_ROLE_ENUM_REFRESH_CACHE
        answer(message, {message.arguments().value(0) == refreshCache ? m_age : 0U});
        return;
    }
    const QString path = QStringLiteral("/%1_test").arg(m_byPath.size() + 1);
    m_byPath.insert(path, std::make_shared<FakeTransaction>(m_bus, path));
    if (m_tellsPaths)
        answer(message, {QVariant::fromValue(QDBusObjectPath(path))});
    else
        answer(message);
}

void FakePackageKit::callTransaction(const QDBusMessage &message,
                                     const std::shared_ptr<FakeTransaction> &one)
{
    answer(message);
    if (message.member() == QStringLiteral("SetHints")) {
        one->hints = message.arguments().value(0).toStringList();
        return;
    }
    if (message.member() == QStringLiteral("Cancel")) {
        one->isCancelled = true;
    } else {
        one->arguments = message.arguments();
        m_calls.append(message.member());
        m_byMethod.insert(message.member(), one);
    }
    const Behaviour behaviour = m_behaviours.value(message.member());
    if (behaviour)
        behaviour(*one);
}
