#include "update/UpdateCheck.h"

#include "update/PackageKit.h"

#include <QCoroDBusPendingCall>
#include <QCoroFuture>

#include <QDBusMessage>

#include <algorithm>

namespace tidewick
{
namespace
{

/// A scheduled check does not refresh lists that are younger.
constexpr uint oldAgeSeconds = 23 * 60 * 60;

constexpr std::chrono::minutes installationTimeout{15};

TransactionCall callOf(const UpdateRequest &request, const char *method, QVariantList arguments)
{
    return {QLatin1String(method), std::move(arguments), request.isInteractive, {},
            request.timeout,       request.callTimeout};
}

TransactionCall ownerOf(const UpdateRequest &request)
{
    return callOf(
        request, "SearchFiles",
        {qulonglong{packagekit::filterInstalled}, QStringList(searchPattern(request.executable))});
}

TransactionCall refreshFor(const UpdateRequest &request)
{
    TransactionCall call = callOf(request, "RefreshCache", {false});
    call.timeout = request.refreshTimeout;
    return call;
}

TransactionCall updatesOf(const UpdateRequest &request, const PackageId &installed)
{
    TransactionCall call = callOf(request, "GetUpdates", {qulonglong{packagekit::filterNone}});
    call.packageName = installed.name;
    return call;
}

TransactionCall versionsOf(const UpdateRequest &request, const PackageId &installed)
{
    TransactionCall call = callOf(
        request, "Resolve",
        {packagekit::filterNewest | packagekit::filterArchitecture, QStringList(installed.name)});
    call.packageName = installed.name;
    return call;
}

QDBusMessage ageOfLists()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(packagekit::service, packagekit::path, packagekit::interface,
                                       QStringLiteral("GetTimeSinceAction"));
    call << uint{packagekit::roleRefreshCache};
    return call;
}

/// 4294967295 means that they were never fetched. No answer counts as old.
bool isOld(const QDBusMessage &age)
{
    bool isNumber = false;
    const uint seconds = age.arguments().value(0).toUInt(&isNumber);
    return !isNumber || seconds >= oldAgeSeconds;
}

const Package *otherVersion(const QList<Package> &packages, const PackageId &installed)
{
    const auto found =
        std::find_if(packages.begin(), packages.end(), [&installed](const Package &package) {
            return package.id.name == installed.name &&
                   package.id.architecture == installed.architecture &&
                   package.id.version != installed.version;
        });
    return found == packages.end() ? nullptr : &*found;
}

bool isLocal(const PackageId &id)
{
    return id.data.endsWith(QLatin1String(":local"));
}

UpdateOutcome failedWith(const UpdateFailure &failure)
{
    UpdateOutcome outcome;
    outcome.failure = failure;
    return outcome;
}

UpdateOutcome outcomeOf(UpdateOutcome::Kind kind, const PackageId &installed, const Package &other)
{
    return {kind, installed, other.id, other.summary, {}};
}

/// The outcome if GetUpdates offered nothing, from the service's answers to Resolve.
UpdateOutcome withoutUpdate(const PackageId &installed, const QList<Package> &versions,
                            const std::optional<UpdateFailure> &refreshFailure)
{
    if (const Package *other = otherVersion(versions, installed))
        return outcomeOf(UpdateOutcome::heldBack, installed, *other);
    if (refreshFailure)
        return failedWith(*refreshFailure);
    const bool isOffered = !isLocal(installed) &&
                           std::none_of(versions.begin(), versions.end(),
                                        [](const Package &package) { return isLocal(package.id); });
    return outcomeOf(isOffered ? UpdateOutcome::upToDate : UpdateOutcome::notOffered, installed,
                     {});
}

} // namespace

QCoro::Task<UpdateOutcome> checkForUpdate(UpdateRequest request, std::stop_token stop)
{
    const PackageKitTransaction search(request.bus, ownerOf(request), stop);
    const QFuture<TransactionResult> searching = search.ending();
    const TransactionResult owners = co_await searching;
    if (owners.failure)
        co_return failedWith(*owners.failure);
    if (owners.packages.isEmpty())
        co_return outcomeOf(UpdateOutcome::notPackaged, {}, {});
    const PackageId installed = owners.packages.first().id;

    bool refreshes = request.refresh == Refresh::always;
    if (request.refresh == Refresh::ifOld) {
        const QDBusPendingCall asking =
            request.bus.asyncCall(ageOfLists(), static_cast<int>(request.callTimeout.count()));
        const QDBusMessage age = co_await asking;
        refreshes = isOld(age);
    }
    std::optional<UpdateFailure> refreshFailure;
    if (refreshes) {
        const PackageKitTransaction refresh(request.bus, refreshFor(request), stop);
        const QFuture<TransactionResult> refreshing = refresh.ending();
        const TransactionResult refreshed = co_await refreshing;
        refreshFailure = refreshed.failure;
    }

    const PackageKitTransaction listing(request.bus, updatesOf(request, installed), stop);
    const QFuture<TransactionResult> updating = listing.ending();
    const TransactionResult updates = co_await updating;
    if (updates.failure)
        co_return failedWith(refreshFailure.value_or(*updates.failure));
    if (const Package *update = otherVersion(updates.packages, installed)) {
        const bool isBlocked = update->info == packagekit::infoBlocked;
        co_return outcomeOf(isBlocked ? UpdateOutcome::heldBack : UpdateOutcome::available,
                            installed, *update);
    }

    const PackageKitTransaction resolution(request.bus, versionsOf(request, installed), stop);
    const QFuture<TransactionResult> resolving = resolution.ending();
    const TransactionResult versions = co_await resolving;
    if (versions.failure)
        co_return failedWith(refreshFailure.value_or(*versions.failure));
    co_return withoutUpdate(installed, versions.packages, refreshFailure);
}

QString searchPattern(const QString &path)
{
    QString pattern;
    for (const QChar character : path) {
        if (QStringLiteral(".[*^$\\").contains(character))
            pattern += QLatin1Char('\\');
        pattern += character;
    }
    return pattern;
}

TransactionCall installationOf(const PackageId &update)
{
    TransactionCall call;
    call.method = QStringLiteral("UpdatePackages");
    call.arguments = {qulonglong{packagekit::flagOnlyTrusted}, QStringList(update.text())};
    call.isInteractive = true;
    call.timeout = installationTimeout;
    return call;
}

} // namespace tidewick
