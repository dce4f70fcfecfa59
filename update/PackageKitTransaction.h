#pragma once

#include "update/PackageId.h"
#include "update/UpdateFailure.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFuture>
#include <QList>
#include <QObject>
#include <QPromise>
#include <QTimer>
#include <QVariant>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

namespace tidewick
{

struct Package
{
    uint info = 0; ///< PkInfoEnum, without the severity that newer services put in the upper half
    PackageId id;
    QString summary;
};

struct TransactionCall
{
    QString method;
    QVariantList arguments;
    /// The user is waiting and may be asked for a password.
    bool isInteractive = false;
    /// Only packages of this name are kept; if it is empty, all are.
    QString packageName = {};
    /// How long the service may stay silent before the transaction fails.
    std::chrono::milliseconds timeout = std::chrono::minutes(2);
    /// How long the service may take to start and to answer a method call.
    std::chrono::milliseconds callTimeout = std::chrono::seconds(25);
};

struct TransactionResult
{
    std::optional<UpdateFailure> failure;
    QList<Package> packages;
};

struct TransactionProgress
{
    uint status = 0;               ///< PkStatusEnum
    std::optional<int> percentage; ///< only where it tells of the download or the installation
    bool canCancel = true;

    bool operator==(const TransactionProgress &) const = default;
};

/// One transaction of the package service: creates it, calls it, and listens until it finishes,
/// fails, stays silent for too long, or the service disappears.
class PackageKitTransaction : public QObject
{
    Q_OBJECT

public:
    /// Starts at once. A stop request ends it at once as cancelled and is passed to the service.
    PackageKitTransaction(QDBusConnection bus, TransactionCall call,
                          const std::stop_token &stop = {});
    /// A transaction that has not ended ends as cancelled; the service may still finish it.
    ~PackageKitTransaction() override;
    Q_DISABLE_COPY_MOVE(PackageKitTransaction)

    /// Delivered in every case, exactly once.
    QFuture<TransactionResult> ending() const { return m_promise.future(); }

    /// Asks the service to stop; the service may be unable to.
    void cancel();

Q_SIGNALS:
    void progressed(const tidewick::TransactionProgress &progress);

private Q_SLOTS:
    void onPackage(uint info, const QString &id, const QString &summary);
    void onErrorCode(uint code, const QString &details);
    void onFinished(uint exit, uint runtime);
    void onDestroy();
    void onDisconnected();
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                             const QStringList &invalidated);

private:
    QCoro::Task<> run();
    /// The service's reply; nothing if it refused or if the transaction has ended meanwhile.
    QCoro::Task<std::optional<QDBusMessage>> ask(QDBusMessage message);
    void listen();
    void setHints();
    QDBusMessage transactionCall(const QString &method) const;
    /// Counts as a sign of life; false after the end.
    bool hear();
    void deliver(const std::optional<UpdateFailure> &failure);

    QDBusConnection m_bus;
    const TransactionCall m_call;
    mutable QPromise<TransactionResult> m_promise;
    bool m_hasEnded = false;
    bool m_isCancelled = false;

    QString m_owner; ///< the unique name of the service that made the transaction
    QString m_path;
    TransactionResult m_result;
    TransactionProgress m_progress;
    QTimer m_silence;
    std::optional<std::stop_callback<std::function<void()>>> m_onStop;
};

} // namespace tidewick
