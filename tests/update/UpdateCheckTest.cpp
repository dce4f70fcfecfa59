#include "update/UpdateCheck.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "tests/update/FakePackageKit.h"
#include "update/PackageKit.h"
#include "update/PackageKitTransaction.h"

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QLocale>

using namespace tidewick;
using namespace std::chrono_literals;

namespace
{

constexpr uint infoInstalled = 1;
constexpr uint infoAvailable = 2;
constexpr uint infoNormal = 5;
constexpr uint infoBlocked = 9;

const QString executable = QStringLiteral("/usr/bin/tidewick");
const QString installedId = QStringLiteral("tidewick;1.0-1;amd64;installed:here");
const QString updateId = QStringLiteral("tidewick;1.1-1;amd64;here");
const PackageId installed = parsePackageId(installedId).value();
const PackageId update = parsePackageId(updateId).value();
const QString silence = QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");

FakePackageKit::Behaviour says(uint info, const QString &id, const QString &summary = {})
{
    return [=](const FakeTransaction &transaction) {
        transaction.package(info, id, summary);
        transaction.finish();
    };
}

FakePackageKit::Behaviour fails(uint code, const QString &details = QStringLiteral("E: its words"))
{
    return [=](const FakeTransaction &transaction) {
        transaction.fail(code, details);
    };
}

/// Tells of `count` packages that are not looked for, and then of `id`, if it is given.
FakePackageKit::Behaviour saysAmongOthers(int count, uint info, const QString &id = {})
{
    return [=](const FakeTransaction &transaction) {
        for (int number = 0; number < count; ++number)
            transaction.package(info, QStringLiteral("other%1;1;amd64;here").arg(number));
        if (!id.isEmpty())
            transaction.package(info, id);
        transaction.finish();
    };
}

void finishes(const FakeTransaction &transaction)
{
    transaction.finish();
}

class UpdateCheckTest : public testing::Test
{
protected:
    /// A system whose sources offer nothing newer.
    UpdateCheckTest()
    {
        service.on(QStringLiteral("SearchFiles"), says(infoInstalled, installedId));
        service.on(QStringLiteral("RefreshCache"), finishes);
        service.on(QStringLiteral("GetUpdates"), finishes);
        service.on(QStringLiteral("Resolve"), says(infoInstalled, installedId));
    }

    void start()
    {
        auto checking = [](UpdateRequest asked, std::stop_token stop,
                           std::shared_ptr<std::optional<UpdateOutcome>> into) -> QCoro::Task<> {
            auto ending = checkForUpdate(std::move(asked), std::move(stop));
            *into = co_await ending;
        };
        checking(request, stop.get_token(), outcome);
    }

    UpdateOutcome check()
    {
        start();
        if (!waitUntil([this] { return outcome->has_value(); }))
            throw std::runtime_error("the check does not end");
        return **outcome;
    }

    PrivateBus bus;
    FakePackageKit service{bus.connect()};
    UpdateRequest request{bus.connect(), executable};
    std::stop_source stop;
    std::shared_ptr<std::optional<UpdateOutcome>> outcome =
        std::make_shared<std::optional<UpdateOutcome>>();
};

using Calls = QStringList;

} // namespace

TEST_F(UpdateCheckTest, asksForThePackageOfTheProgramThatRuns)
{
    request.executable = QStringLiteral("/opt/tide.wick/bin/tidewick");
    check();
    const auto search = service.transaction(QStringLiteral("SearchFiles"));
    EXPECT_EQ(search->arguments,
              QVariantList(
                  {qulonglong(4), QStringList(QStringLiteral("/opt/tide\\.wick/bin/tidewick"))}));
}

TEST_F(UpdateCheckTest, goesTheWholeRoadWhenTheUserAsked)
{
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
    EXPECT_EQ(service.calls(), Calls({QStringLiteral("SearchFiles"), QStringLiteral("RefreshCache"),
                                      QStringLiteral("GetUpdates"), QStringLiteral("Resolve")}));
    EXPECT_EQ(service.transaction(QStringLiteral("RefreshCache"))->arguments,
              QVariantList{QVariant(false)});
    EXPECT_EQ(service.transaction(QStringLiteral("GetUpdates"))->arguments,
              QVariantList{QVariant(qulonglong(2))});
    EXPECT_EQ(service.transaction(QStringLiteral("Resolve"))->arguments,
              QVariantList({qulonglong(0x50000), QStringList(QStringLiteral("tidewick"))}));
}

TEST_F(UpdateCheckTest, mayAskForAPasswordOnlyWhereTheUserAsked)
{
    request.isInteractive = true;
    check();
    QStringList hints = service.transaction(QStringLiteral("RefreshCache"))->hints;
    EXPECT_TRUE(hints.contains(QStringLiteral("interactive=true")));
    EXPECT_TRUE(hints.contains(QStringLiteral("background=false")));
    outcome->reset();
    request.isInteractive = false;
    check();
    hints = service.transaction(QStringLiteral("RefreshCache"))->hints;
    EXPECT_TRUE(hints.contains(QStringLiteral("interactive=false")));
    EXPECT_TRUE(hints.contains(QStringLiteral("background=true")));
}

TEST_F(UpdateCheckTest, leavesYoungListsAlone)
{
    request.refresh = Refresh::ifOld;
    service.setAge(23 * 3600 - 1);
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
    EXPECT_FALSE(service.calls().contains(QStringLiteral("RefreshCache")));
}

TEST_F(UpdateCheckTest, refreshesOldLists)
{
    request.refresh = Refresh::ifOld;
    service.setAge(23 * 3600);
    check();
    EXPECT_TRUE(service.calls().contains(QStringLiteral("RefreshCache")));
}

TEST_F(UpdateCheckTest, refreshesListsThatWereNeverFetched)
{
    request.refresh = Refresh::ifOld;
    check();
    EXPECT_TRUE(service.calls().contains(QStringLiteral("RefreshCache")));
}

TEST_F(UpdateCheckTest, refreshesListsOfUnknownAge)
{
    request.refresh = Refresh::ifOld;
    service.refuse(QStringLiteral("GetTimeSinceAction"), silence);
    check();
    EXPECT_TRUE(service.calls().contains(QStringLiteral("RefreshCache")));
}

TEST_F(UpdateCheckTest, waitsForARefreshByItsOwnLimit)
{
    request.refreshTimeout = 1ms;
    service.on(QStringLiteral("RefreshCache"), [](const FakeTransaction & /*silent*/) {});
    EXPECT_EQ(check().failure.error, UpdateError::timedOut);
}

TEST_F(UpdateCheckTest, neverRefreshesWhereItMustNot)
{
    request.refresh = Refresh::never;
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
    EXPECT_FALSE(service.calls().contains(QStringLiteral("RefreshCache")));
}

TEST_F(UpdateCheckTest, findsTheUpdate)
{
    service.on(QStringLiteral("GetUpdates"), says(infoNormal, updateId, QStringLiteral("Servers")));
    const UpdateOutcome found = check();
    EXPECT_EQ(found.kind, UpdateOutcome::available);
    EXPECT_EQ(found.installed, installed);
    EXPECT_EQ(found.update, update);
    EXPECT_EQ(found.summary, QStringLiteral("Servers"));
}

TEST_F(UpdateCheckTest, ignoresOtherPackagesArchitecturesAndTheSameVersion)
{
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction &transaction) {
        transaction.package(infoNormal, QStringLiteral("tidewick-doc;1.1-1;amd64;here"));
        transaction.package(infoNormal, QStringLiteral("tidewick;1.1-1;i386;here"));
        transaction.package(infoNormal, QStringLiteral("tidewick;1.0-1;amd64;here"));
        transaction.finish();
    });
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
}

TEST_F(UpdateCheckTest, takesNoOtherSignalForAPackage)
{
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction &transaction) {
        transaction.signal(QStringLiteral("MediaChangeRequired"),
                           {infoNormal, updateId, QStringLiteral("the disc")});
        transaction.finish();
    });
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
}

TEST_F(UpdateCheckTest, findsTheUpdateAmongThousands)
{
    service.on(QStringLiteral("GetUpdates"), saysAmongOthers(5000, infoNormal, updateId));
    EXPECT_EQ(check().kind, UpdateOutcome::available);
}

TEST_F(UpdateCheckTest, looksPastTheSeverityInTheInfo)
{
    service.on(QStringLiteral("GetUpdates"), says((8U << 16) | infoBlocked, updateId));
    EXPECT_EQ(check().kind, UpdateOutcome::heldBack);
}

TEST_F(UpdateCheckTest, tellsAVersionThatIsHeldBack)
{
    service.on(QStringLiteral("Resolve"), [](const FakeTransaction &transaction) {
        transaction.package(infoInstalled, installedId);
        transaction.package(infoAvailable, updateId);
        transaction.finish();
    });
    const UpdateOutcome found = check();
    EXPECT_EQ(found.kind, UpdateOutcome::heldBack);
    EXPECT_EQ(found.update, update);
}

TEST_F(UpdateCheckTest, tellsACopyThatNoPackageHolds)
{
    service.on(QStringLiteral("SearchFiles"), finishes);
    EXPECT_EQ(check().kind, UpdateOutcome::notPackaged);
    EXPECT_EQ(service.calls().size(), 1);
}

TEST_F(UpdateCheckTest, tellsAPackageThatNoSourceOffers)
{
    service.on(QStringLiteral("Resolve"),
               says(infoInstalled, QStringLiteral("tidewick;1.0-1;amd64;manual:local")));
    EXPECT_EQ(check().kind, UpdateOutcome::notOffered);
}

TEST_F(UpdateCheckTest, hearsNobodyButTheService)
{
    QDBusConnection stranger = bus.connect();
    bool hasSpoken = false;
    service.on(QStringLiteral("GetUpdates"), [&](const FakeTransaction &transaction) {
        const FakeTransaction forged(stranger, transaction.path());
        forged.package(infoNormal, updateId);
        forged.finish();
        // An answer from the bus: what was said before has been passed on.
        hasSpoken = stranger.interface()->isServiceRegistered(stranger.baseService());
        transaction.finish();
    });
    EXPECT_EQ(check().kind, UpdateOutcome::upToDate);
    EXPECT_TRUE(hasSpoken);
}

TEST_F(UpdateCheckTest, neverTellsUpToDateAfterAFailedRefresh)
{
    service.on(QStringLiteral("RefreshCache"), fails(64));
    const UpdateOutcome found = check();
    EXPECT_EQ(found.kind, UpdateOutcome::failed);
    EXPECT_EQ(found.failure.error, UpdateError::sources);
    EXPECT_EQ(found.failure.details, QStringLiteral("E: its words"));
}

TEST_F(UpdateCheckTest, stillFindsTheUpdateAfterAFailedRefresh)
{
    service.on(QStringLiteral("RefreshCache"), fails(64));
    service.on(QStringLiteral("GetUpdates"), says(infoNormal, updateId));
    EXPECT_EQ(check().kind, UpdateOutcome::available);
}

TEST_F(UpdateCheckTest, tellsTheRefreshsFailureWhereTheRestFailsToo)
{
    service.on(QStringLiteral("RefreshCache"), fails(26));
    service.on(QStringLiteral("GetUpdates"), fails(4));
    EXPECT_EQ(check().failure.error, UpdateError::locked);
}

TEST_F(UpdateCheckTest, stopsAtOnceAndTellsTheService)
{
    service.on(QStringLiteral("RefreshCache"), [](const FakeTransaction & /*silent*/) {});
    start();
    ASSERT_TRUE(waitUntil([this] { return service.calls().size() == 2; }));
    stop.request_stop();
    ASSERT_TRUE(waitUntil([this] { return outcome->has_value(); }));
    EXPECT_EQ((*outcome)->failure.error, UpdateError::cancelled);
    const auto refresh = service.transaction(QStringLiteral("RefreshCache"));
    EXPECT_TRUE(waitUntil([&refresh] { return refresh->isCancelled; }));
    EXPECT_EQ(service.calls().size(), 2) << "nothing is asked after a stop";
}

TEST_F(UpdateCheckTest, asksNothingAfterAStop)
{
    stop.request_stop();
    EXPECT_EQ(check().failure.error, UpdateError::cancelled);
    EXPECT_FALSE(waitUntil([this] { return service.transactions() > 0; }, 100));
}

TEST_F(UpdateCheckTest, failsWhereATransactionHasNoPath)
{
    service.leaveOutPaths();
    EXPECT_EQ(check().failure.error, UpdateError::other);
}

TEST_F(UpdateCheckTest, givesHintsOfTheUsersLanguageAndPatience)
{
    check();
    EXPECT_EQ(
        service.transaction(QStringLiteral("GetUpdates"))->hints,
        QStringList({QStringLiteral("locale=%1.UTF-8").arg(QLocale::system().name()),
                     QStringLiteral("background=true"), QStringLiteral("interactive=false")}));
}

TEST_F(UpdateCheckTest, callsNothingWhereItIsCancelledBeforeTheServiceAnswers)
{
    PackageKitTransaction transaction(bus.connect(), {QStringLiteral("GetUpdates"), {}});
    transaction.cancel();
    ASSERT_TRUE(waitUntil([&] { return transaction.ending().isFinished(); }));
    EXPECT_EQ(transaction.ending().result().failure->error, UpdateError::cancelled);
    EXPECT_EQ(service.transactions(), 1);
    EXPECT_EQ(service.calls(), Calls());
}

TEST_F(UpdateCheckTest, mayBeForgottenBeforeTheServiceAnswers)
{
    std::make_unique<PackageKitTransaction>(bus.connect(),
                                            TransactionCall{QStringLiteral("GetUpdates"), {}})
        .reset();
    ASSERT_TRUE(waitUntil([this] { return service.transactions() == 1; }));
    EXPECT_FALSE(waitUntil([this] { return !service.calls().isEmpty(); }, 100));
}

TEST_F(UpdateCheckTest, tellsOfItsProgress)
{
    static constexpr uint waits = 1; // PK_STATUS_ENUM_WAIT
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction &transaction) {
        const QString percentage = QStringLiteral("Percentage");
        transaction.set({{QStringLiteral("Status"), waits}});
        transaction.set({{QStringLiteral("Status"), uint{packagekit::statusDownload}}});
        transaction.set({{percentage, 100U}});
        transaction.set({{percentage, 100U}});
        transaction.set({{percentage, 50U}}, QStringLiteral("org.example.Another"));
        transaction.set({{percentage, 101U}});
        transaction.finish();
    });
    PackageKitTransaction transaction(bus.connect(), {QStringLiteral("GetUpdates"), {}});
    QList<TransactionProgress> told;
    QObject::connect(&transaction, &PackageKitTransaction::progressed,
                     [&told](const TransactionProgress &progress) { told.append(progress); });
    ASSERT_TRUE(waitUntil([&] { return transaction.ending().isFinished(); }));
    EXPECT_EQ(told, QList<TransactionProgress>({{waits, {}, true},
                                                {packagekit::statusDownload, {}, true},
                                                {packagekit::statusDownload, 100, true}}));
}

TEST_F(UpdateCheckTest, cancelsNothingThatHasEnded)
{
    PackageKitTransaction transaction(bus.connect(), {QStringLiteral("GetUpdates"), {}});
    ASSERT_TRUE(waitUntil([&] { return transaction.ending().isFinished(); }));
    transaction.cancel();
    const auto ended = service.transaction(QStringLiteral("GetUpdates"));
    EXPECT_FALSE(waitUntil([&] { return ended->isCancelled; }, 100));
}

TEST_F(UpdateCheckTest, waitsAsLongAsTheServiceShowsLife)
{
    request.timeout = 1500ms;
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction & /*slow*/) {});
    start();
    ASSERT_TRUE(
        waitUntil([this] { return service.calls().contains(QStringLiteral("GetUpdates")); }));
    const auto slow = service.transaction(QStringLiteral("GetUpdates"));
    for (uint percentage = 0; percentage < 20; ++percentage) {
        slow->set({{QStringLiteral("Percentage"), percentage}});
        EXPECT_FALSE(waitUntil([this] { return outcome->has_value(); }, 100));
    }
    slow->finish();
    ASSERT_TRUE(waitUntil([this] { return outcome->has_value(); }));
    EXPECT_EQ((*outcome)->kind, UpdateOutcome::upToDate);
}

TEST_F(UpdateCheckTest, tellsTheFirstOfSeveralErrors)
{
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction &transaction) {
        transaction.errorCode(2, QStringLiteral("first"));
        transaction.fail(46, QStringLiteral("second"));
    });
    request.refresh = Refresh::never;
    EXPECT_EQ(check().failure.error, UpdateError::noNetwork);
}

TEST_F(UpdateCheckTest, keepsAThousandPackagesAtMost)
{
    service.on(QStringLiteral("GetUpdates"), saysAmongOthers(1005, infoNormal));
    const PackageKitTransaction transaction(bus.connect(), {QStringLiteral("GetUpdates"), {}});
    ASSERT_TRUE(waitUntil([&] { return transaction.ending().isFinished(); }));
    EXPECT_EQ(transaction.ending().result().packages.size(), 1000);
}

TEST_F(UpdateCheckTest, findsAVersionThatIsHeldBackAmongThousands)
{
    service.on(QStringLiteral("Resolve"), saysAmongOthers(1005, infoAvailable, updateId));
    EXPECT_EQ(check().kind, UpdateOutcome::heldBack);
}

struct StepRow
{
    const char *name;
    const char *method;
};

class StepOfACheck : public UpdateCheckTest, public testing::WithParamInterface<StepRow>
{
protected:
    const QString method = QString::fromLatin1(GetParam().method);
};

TEST_P(StepOfACheck, thatFailsIsTheOutcome)
{
    service.on(method, fails(26));
    const UpdateOutcome found = check();
    EXPECT_EQ(found.kind, UpdateOutcome::failed);
    EXPECT_EQ(found.failure.error, UpdateError::locked);
}

TEST_P(StepOfACheck, isGivenUpWhereTheServiceDiesInIt)
{
    service.on(method, [this](const FakeTransaction & /*silent*/) {
        QMetaObject::invokeMethod(
            &service, [this] { service.die(); }, Qt::QueuedConnection);
    });
    EXPECT_EQ(check().failure.error, UpdateError::vanished);
}

TEST_P(StepOfACheck, isGivenUpWhereTheServiceFallsSilentInIt)
{
    request.timeout = 100ms;
    request.refreshTimeout = 100ms;
    service.on(method, [](const FakeTransaction & /*silent*/) {});
    EXPECT_EQ(check().failure.error, UpdateError::timedOut);
}

TEST_P(StepOfACheck, isGivenUpWhereTheServiceDropsItWithoutAResult)
{
    service.on(method, [](const FakeTransaction &transaction) {
        transaction.signal(QStringLiteral("Destroy"), {});
    });
    EXPECT_EQ(check().failure.error, UpdateError::vanished);
}

TEST_P(StepOfACheck, mayEndWithoutSayingWhy)
{
    service.on(method, [](const FakeTransaction &transaction) { transaction.finish(2); });
    EXPECT_EQ(check().failure.error, UpdateError::other);
}

TEST_P(StepOfACheck, mayBeRefusedAtTheCall)
{
    service.refuse(method,
                   QStringLiteral("org.freedesktop.PackageKit.Transaction.RefusedByPolicy"));
    EXPECT_EQ(check().failure.error, UpdateError::notAuthorized);
}

TEST_P(StepOfACheck, takesOddSignalsWithoutHarm)
{
    service.on(method, [](const FakeTransaction &transaction) {
        transaction.package(4294967295U, QString());
        transaction.package(0, QStringLiteral(";;;"));
        transaction.package(0, QStringLiteral("a;b"));
        transaction.package(0, QStringLiteral("x;").repeated(100000));
        transaction.signal(QStringLiteral("Package"), {QStringLiteral("wrong types")});
        transaction.signal(QStringLiteral("Finished"), {});
        transaction.signal(QStringLiteral("NoSuchSignal"), {1});
        transaction.set({{QStringLiteral("Status"), QStringLiteral("text")},
                         {QStringLiteral("Percentage"), -5},
                         {QStringLiteral("AllowCancel"), QStringList()}});
        transaction.fail(4294967295U, QString(100000, QLatin1Char('<')));
        transaction.finish();
        transaction.finish();
    });
    const UpdateOutcome found = check();
    EXPECT_EQ(found.failure.error, UpdateError::other);
    EXPECT_LT(found.failure.details.size(), 5000);
}

INSTANTIATE_TEST_SUITE_P(Rows, StepOfACheck,
                         testing::Values(StepRow{"search", "SearchFiles"},
                                         StepRow{"refresh", "RefreshCache"},
                                         StepRow{"updates", "GetUpdates"},
                                         StepRow{"resolve", "Resolve"}),
                         rowName);

TEST_F(UpdateCheckTest, failsWhereNoTransactionIsAnswered)
{
    request.callTimeout = 100ms;
    service.ignore(QStringLiteral("CreateTransaction"));
    EXPECT_EQ(check().failure.error, UpdateError::timedOut);
}

TEST_F(UpdateCheckTest, failsWhereTheServiceDiesBeforeItAnswers)
{
    service.ignore(QStringLiteral("CreateTransaction"));
    start();
    waitUntil([] { return false; }, 100);
    service.die();
    ASSERT_TRUE(waitUntil([this] { return outcome->has_value(); }));
    EXPECT_EQ((*outcome)->failure.error, UpdateError::vanished);
}

TEST_F(UpdateCheckTest, logsHowEachTransactionEnds)
{
    const CapturedLog log("tidewick.update=true");
    service.on(QStringLiteral("Resolve"), fails(2));
    check();
    const QString update = QStringLiteral("tidewick.update: ");
    const QStringList lines = CapturedLog::lines();
    EXPECT_TRUE(lines.contains(update + QStringLiteral("begin \"SearchFiles\"")));
    EXPECT_TRUE(lines.contains(update + QStringLiteral("finished \"SearchFiles\" 1 packages")));
    EXPECT_TRUE(
        lines.last().startsWith(update + QStringLiteral("failed \"Resolve\" \"There is no")));
}

TEST_F(UpdateCheckTest, failsWithoutABus)
{
    request.bus = QDBusConnection(QStringLiteral("no such connection"));
    EXPECT_EQ(check().failure.error, UpdateError::noBus);
}

TEST_F(UpdateCheckTest, failsWhereTheBusGoes)
{
    service.on(QStringLiteral("GetUpdates"), [](const FakeTransaction & /*silent*/) {});
    start();
    ASSERT_TRUE(
        waitUntil([this] { return service.calls().contains(QStringLiteral("GetUpdates")); }));
    waitUntil([] { return false; }, 100); // for the answer to the call, which is not the result
    bus.kill();
    ASSERT_TRUE(waitUntil([this] { return outcome->has_value(); }));
    EXPECT_EQ((*outcome)->failure.error, UpdateError::noBus);
}

struct ServiceRow
{
    const char *name;
    const char *command; ///< that the bus starts for the service; null for none
    UpdateError error;
};

class MissingService : public testing::TestWithParam<ServiceRow>
{
};

TEST_P(MissingService, isToldApart)
{
    QMap<QString, QString> services;
    if (GetParam().command)
        services.insert(packagekit::service, QString::fromLatin1(GetParam().command));
    PrivateBus bus(services);
    PackageKitTransaction transaction(bus.connect(), {QStringLiteral("GetUpdates"), {}});
    const QFuture<TransactionResult> ending = transaction.ending();
    ASSERT_TRUE(waitUntil([&ending] { return ending.isFinished(); }));
    EXPECT_EQ(ending.result().failure->error, GetParam().error);
    EXPECT_FALSE(ending.result().failure->details.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MissingService,
    testing::Values(ServiceRow{"notInstalled", nullptr, UpdateError::noService},
                    ServiceRow{"endsAtOnce", "/bin/false", UpdateError::startFailed},
                    ServiceRow{"programMissing", "/no/such/program", UpdateError::startFailed},
                    ServiceRow{"neverComesUp", "/bin/sleep 60", UpdateError::timedOut}),
    rowName);
