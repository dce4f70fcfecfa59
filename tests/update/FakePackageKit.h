#pragma once

#include "update/PackageKit.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <QStringList>

#include <functional>
#include <memory>

/// One transaction of the fake service, and what it says to its caller.
class FakeTransaction
{
public:
    FakeTransaction(QDBusConnection bus, QString path);

    const QString &path() const { return m_path; }
    QStringList hints;
    QVariantList arguments;
    bool isCancelled = false;

    void package(uint info, const QString &id, const QString &summary = {}) const;
    void errorCode(uint code, const QString &details) const;
    /// Tells of properties of the transaction, or of another interface at its path.
    void set(const QVariantMap &properties,
             const QString &interface = tidewick::packagekit::transactionInterface) const;
    /// 1 is success.
    void finish(uint exit = 1) const;
    void fail(uint code, const QString &details) const;
    void signal(const QString &name, const QVariantList &arguments) const;

private:
    QDBusConnection m_bus;
    QString m_path;
};

/// Speaks PackageKit on a bus as far as a test told it to; a transaction whose method has no
/// behaviour is accepted and never heard of again.
class FakePackageKit : public QDBusVirtualObject
{
public:
    using Behaviour = std::function<void(const FakeTransaction &)>;

    explicit FakePackageKit(const QDBusConnection &bus);
    ~FakePackageKit() override;
    Q_DISABLE_COPY_MOVE(FakePackageKit)

    void on(const QString &method, const Behaviour &behaviour);
    /// Answers calls of `method`, of the service or of a transaction, with this error.
    void refuse(const QString &method, const QString &error);
    /// Leaves calls of `method` without any answer.
    void ignore(const QString &method);
    /// Tells no path of a new transaction.
    void leaveOutPaths() { m_tellsPaths = false; }
    /// What GetTimeSinceAction answers.
    void setAge(uint seconds) { m_age = seconds; }
    /// Sends a signal of the service, without arguments.
    void signal(const char *name);
    /// Leaves the bus, as a service that was killed.
    void die();

    /// The methods of the transactions, in the order they came.
    const QStringList &calls() const { return m_calls; }
    /// How many transactions have been created.
    qsizetype transactions() const { return m_byPath.size(); }
    /// The latest transaction with this method; null before there is one.
    std::shared_ptr<FakeTransaction> transaction(const QString &method) const;

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void answer(const QDBusMessage &message, const QVariantList &arguments = {});
    void callService(const QDBusMessage &message);
    void callTransaction(const QDBusMessage &message, const std::shared_ptr<FakeTransaction> &one);

    QDBusConnection m_bus;
    QMap<QString, Behaviour> m_behaviours;
    QMap<QString, QString> m_refusals;
    QStringList m_ignored;
    bool m_tellsPaths = true;
    uint m_age = 4294967295;
    QStringList m_calls;
    QMap<QString, std::shared_ptr<FakeTransaction>> m_byPath;
    QMap<QString, std::shared_ptr<FakeTransaction>> m_byMethod;
};
