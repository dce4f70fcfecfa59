#include "update/PackageKitTransaction.h"

#include "update/Logging.h"
#include "update/PackageKit.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QDeadlineTimer>
#include <QLocale>
#include <QPointer>
#include <QStringList>

namespace tidewick
{
namespace
{

constexpr qsizetype maxPackages = 1000;

/// Asks for the service's unique name. Not every Qt tells the sender of a reply.
QDBusMessage ownerQuestion()
{
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    return question << QString(packagekit::service);
}

} // namespace

PackageKitTransaction::PackageKitTransaction(QDBusConnection bus, TransactionCall call,
                                             const std::stop_token &stop)
    : m_bus(std::move(bus)), m_call(std::move(call))
{
    qCDebug(updateLog) << "begin" << m_call.method;
    m_promise.start();
    m_silence.setInterval(m_call.timeout);
    connect(&m_silence, &QTimer::timeout, this, [this] {
        deliver(UpdateFailure{UpdateError::timedOut, {}});
    });
    if (stop.stop_requested()) {
        deliver(UpdateFailure{UpdateError::cancelled, {}});
    } else if (!m_bus.isConnected()) {
        deliver(UpdateFailure{UpdateError::noBus, asParagraphs(m_bus.lastError().message())});
    } else {
        run();
        m_onStop.emplace(stop, [this] {
            cancel();
            deliver(UpdateFailure{UpdateError::cancelled, {}});
        });
    }
}

PackageKitTransaction::~PackageKitTransaction()
{
    deliver(UpdateFailure{UpdateError::cancelled, {}});
}

QCoro::Task<> PackageKitTransaction::run()
{
    auto creation = ask(QDBusMessage::createMethodCall(packagekit::service, packagekit::path,
                                                       packagekit::interface,
                                                       QStringLiteral("CreateTransaction")));
    const std::optional<QDBusMessage> created = co_await creation;
    if (!created)
        co_return;
    m_path = created->arguments().value(0).value<QDBusObjectPath>().path();
    if (m_path.isEmpty()) {
        deliver(UpdateFailure{UpdateError::other, {}});
        co_return;
    }
    auto question = ask(ownerQuestion());
    const std::optional<QDBusMessage> answer = co_await question;
    if (!answer)
        co_return;
    m_owner = answer->arguments().value(0).toString();
    if (m_isCancelled) {
        deliver(UpdateFailure{UpdateError::cancelled, {}});
        co_return;
    }
    listen();
    setHints();
    QDBusMessage call = transactionCall(m_call.method);
    call.setArguments(m_call.arguments);
    ask(call); // only a refusal matters; signals report the rest
    m_silence.start();
}

// Listens to the unique name, so that nobody else, not even a second service, can send results.
void PackageKitTransaction::listen()
{
    const auto to = [this](const QString &interface, const char *signal, const char *slot) {
        m_bus.connect(m_owner, m_path, interface, QLatin1String(signal), this, slot);
    };
    to(packagekit::transactionInterface, "Package", SLOT(onPackage(uint, QString, QString)));
    to(packagekit::transactionInterface, "ErrorCode", SLOT(onErrorCode(uint, QString)));
    to(packagekit::transactionInterface, "Finished", SLOT(onFinished(uint, uint)));
    to(packagekit::transactionInterface, "Destroy", SLOT(onDestroy()));
    to(QStringLiteral("org.freedesktop.DBus.Properties"), "PropertiesChanged",
       SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));
    m_bus.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  this, SLOT(onDisconnected()));
    auto *watcher =
        new QDBusServiceWatcher(m_owner, m_bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        deliver(UpdateFailure{UpdateError::vanished, {}});
    });
}

void PackageKitTransaction::setHints()
{
    const QString yesOrNo = m_call.isInteractive ? QStringLiteral("true") : QStringLiteral("false");
    QDBusMessage hints = transactionCall(QStringLiteral("SetHints"));
    hints << QStringList(
        {QStringLiteral("locale=%1.UTF-8").arg(QLocale::system().name()),
         QStringLiteral("background=") +
             (m_call.isInteractive ? QStringLiteral("false") : QStringLiteral("true")),
         QStringLiteral("interactive=") + yesOrNo});
    m_bus.asyncCall(hints); // the service may ignore hints that it does not know
}

QDBusMessage PackageKitTransaction::transactionCall(const QString &method) const
{
    return QDBusMessage::createMethodCall(m_owner, m_path, packagekit::transactionInterface,
                                          method);
}

QCoro::Task<std::optional<QDBusMessage>> PackageKitTransaction::ask(QDBusMessage message)
{
    const QPointer<PackageKitTransaction> self(this);
    const int timeout = static_cast<int>(m_call.callTimeout.count());
    const QDeadlineTimer early(timeout / 2);
    const QDBusPendingCall call = m_bus.asyncCall(message, timeout);
    const QDBusMessage reply = co_await call;
    if (!self || m_hasEnded)
        co_return std::nullopt;
    if (reply.type() != QDBusMessage::ErrorMessage)
        co_return reply;
    const QDBusError error(reply);
    UpdateFailure failure = failureOfCall(error);
    // The bus has one error for an answer that is late and for one that can no longer come.
    if (error.type() == QDBusError::NoReply && !early.hasExpired())
        failure.error = UpdateError::vanished;
    deliver(failure);
    co_return std::nullopt;
}

void PackageKitTransaction::cancel()
{
    m_isCancelled = true;
    if (!m_owner.isEmpty() && !m_hasEnded)
        m_bus.asyncCall(transactionCall(QStringLiteral("Cancel")));
}

bool PackageKitTransaction::hear()
{
    if (!m_hasEnded)
        m_silence.start();
    return !m_hasEnded;
}

void PackageKitTransaction::onPackage(uint info, const QString &id, const QString &summary)
{
    if (!hear() || m_result.packages.size() >= maxPackages)
        return;
    const std::optional<PackageId> parsed = parsePackageId(id);
    if (!parsed || (!m_call.packageName.isEmpty() && parsed->name != m_call.packageName))
        return;
    m_result.packages.append({info & packagekit::infoMask, *parsed, asLine(summary)});
}

void PackageKitTransaction::onErrorCode(uint code, const QString &details)
{
    if (hear() && !m_result.failure)
        m_result.failure = failureOfErrorCode(code, details);
}

void PackageKitTransaction::onFinished(uint exit, uint /*runtime*/)
{
    if (!m_result.failure && exit != packagekit::exitSuccess)
        m_result.failure = failureOfExit(exit);
    deliver(m_result.failure);
}

void PackageKitTransaction::onDestroy()
{
    deliver(m_result.failure.value_or(UpdateFailure{UpdateError::vanished, {}}));
}

void PackageKitTransaction::onDisconnected()
{
    deliver(UpdateFailure{UpdateError::noBus, {}});
}

void PackageKitTransaction::onPropertiesChanged(const QString &interface,
                                                const QVariantMap &changed,
                                                const QStringList & /*invalidated*/)
{
    if (interface != packagekit::transactionInterface || !hear())
        return;
    TransactionProgress progress = m_progress;
    if (const auto status = changed.constFind(QStringLiteral("Status")); status != changed.cend()) {
        progress.status = status->toUInt();
        progress.percentage.reset(); // the last number belongs to another status
    }
    const QVariant percentage = changed.value(QStringLiteral("Percentage"));
    const bool tells = progress.status == packagekit::statusDownload ||
                       progress.status == packagekit::statusInstall;
    if (percentage.isValid() && tells && percentage.toUInt() <= 100)
        progress.percentage = percentage.toInt();
    if (const auto can = changed.constFind(QStringLiteral("AllowCancel")); can != changed.cend())
        progress.canCancel = can->toBool();
    if (progress == m_progress)
        return;
    m_progress = progress;
    Q_EMIT progressed(m_progress);
}

void PackageKitTransaction::deliver(const std::optional<UpdateFailure> &failure)
{
    if (m_hasEnded)
        return;
    m_hasEnded = true;
    m_silence.stop();
    if (failure)
        qCDebug(updateLog) << "failed" << m_call.method << sentence(failure->error)
                           << failure->details;
    else
        qCDebug(updateLog) << "finished" << m_call.method << m_result.packages.size() << "packages";
    m_result.failure = failure;
    m_promise.addResult(m_result);
    m_promise.finish();
}

} // namespace tidewick
