#include "update/UpdaterController.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "tests/update/FakePackageKit.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <cstdlib>

using namespace tidewick;
using namespace std::chrono_literals;

namespace
{

using Focus = UpdateDialogs::Focus;

constexpr uint infoInstalled = 1;
constexpr uint infoNormal = 5;
const QString installedId = QStringLiteral("tidewick;1.0-1;amd64;installed:here");
const QString updateId = QStringLiteral("tidewick;1.1-1;amd64;here");
const QString newerId = QStringLiteral("tidewick;1.2-1;amd64;here");

/// What the user would see, and the user.
class RecordingDialogs : public UpdateDialogs
{
public:
    void show(const UpdateNotice &shown, Focus focus) override
    {
        notice = shown;
        headings.append(shown.heading);
        openings.append(focus);
        isOpen = true;
    }
    void change(const UpdateNotice &changed) override
    {
        if (!isOpen)
            return;
        notice = changed;
        headings.append(changed.heading);
    }
    void close() override { isOpen = false; }
    void setAnswer(const std::function<void(UpdateAction)> &answered) override
    {
        answer = answered;
    }

    UpdateNotice notice;
    QStringList headings;
    QList<Focus> openings;
    bool isOpen = false;
    std::function<void(UpdateAction)> answer;
};

class UpdaterControllerTest : public testing::Test
{
protected:
    /// A system whose sources offer nothing newer, and whose lists are fresh.
    UpdaterControllerTest()
    {
        service.setAge(0);
        service.on(QStringLiteral("SearchFiles"), [](const FakeTransaction &transaction) {
            transaction.package(infoInstalled, installedId);
            transaction.finish();
        });
        service.on(QStringLiteral("RefreshCache"),
                   [](const FakeTransaction &transaction) { transaction.finish(); });
        service.on(QStringLiteral("Resolve"), [](const FakeTransaction &transaction) {
            transaction.package(infoInstalled, installedId);
            transaction.finish();
        });
        offer({});
    }
    /// Hears the service's last replies: what waits for one would wait for ever without the bus.
    ~UpdaterControllerTest() override
    {
        updater.reset();
        letTicksPass();
    }
    Q_DISABLE_COPY_MOVE(UpdaterControllerTest)

    void offer(const QString &id)
    {
        service.on(QStringLiteral("GetUpdates"), [id](const FakeTransaction &transaction) {
            if (!id.isEmpty())
                transaction.package(infoNormal, id);
            transaction.finish();
        });
    }

    /// Without a schedule unless told: its times are then a few milliseconds.
    UpdaterController &start(bool hasSchedule = false)
    {
        UpdaterSystem system;
        system.bus = [this] {
            return connection;
        };
        system.executable = QStringLiteral("/usr/bin/tidewick");
        system.isReplaced = [this] {
            return isReplaced;
        };
        system.relaunch = [this] {
            ++relaunches;
            return canRelaunch;
        };
        system.now = [this] {
            return now;
        };
        auto recording = std::make_unique<RecordingDialogs>();
        dialogs = recording.get();
        system.dialogs = std::move(recording);
        system.firstCheck = 20ms;
        system.tick = tick;
        system.echo = echo;
        system.callTimeout = callTimeout;
        updater = std::make_unique<UpdaterController>(hasSchedule, std::move(system));
        return *updater;
    }

    qsizetype count(const QString &method) const { return service.calls().count(method); }
    bool waitForCalls(const QString &method, qsizetype times)
    {
        return waitUntil([&] { return count(method) >= times; });
    }
    bool waitForHeading(const QString &heading)
    {
        return waitUntil([&] { return dialogs->isOpen && dialogs->notice.heading == heading; });
    }
    /// Several ticks of the schedule.
    static void letTicksPass()
    {
        waitUntil([] { return false; }, 150);
    }

    bool checkAndOffer()
    {
        offer(updateId);
        updater->checkForUpdates();
        return waitForHeading(QStringLiteral("Tidewick 1.1-1 is available"));
    }
    bool startInstalling()
    {
        if (!checkAndOffer())
            return false;
        dialogs->answer(UpdateAction::install);
        return waitForCalls(QStringLiteral("UpdatePackages"), 1);
    }
    std::shared_ptr<FakeTransaction> installation() const
    {
        return service.transaction(QStringLiteral("UpdatePackages"));
    }

    PrivateBus bus;
    FakePackageKit service{bus.connect()};
    QDBusConnection connection = bus.connect();
    QDateTime now = QDateTime::fromString(QStringLiteral("2026-03-01T08:00:00Z"), Qt::ISODate);
    std::chrono::milliseconds tick = 20ms;
    std::chrono::milliseconds echo = 30s;
    std::chrono::milliseconds callTimeout = 25s;
    bool isReplaced = false;
    bool canRelaunch = true;
    int relaunches = 0;
    RecordingDialogs *dialogs = nullptr;
    std::unique_ptr<UpdaterController> updater;
};

const QString checking = QStringLiteral("Checking for updates…");
const QString upToDate = QStringLiteral("Tidewick is up to date");
const QString installing = QStringLiteral("Installing Tidewick 1.1-1");
const QString installedHeading = QStringLiteral("Tidewick 1.1-1 is installed");

} // namespace

TEST_F(UpdaterControllerTest, saysAtOnceThatItIsChecking)
{
    start();
    EXPECT_TRUE(updater->canCheckForUpdates());
    updater->checkForUpdates();
    EXPECT_EQ(dialogs->headings, QStringList(checking));
    EXPECT_EQ(dialogs->openings, QList<Focus>({Focus::take}));
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_TRUE(waitForHeading(upToDate));
    EXPECT_TRUE(updater->canCheckForUpdates());
    EXPECT_EQ(dialogs->openings.size(), 1) << "the answer takes the focus from nobody";
}

TEST_F(UpdaterControllerTest, runsOneCheckAtATime)
{
    start();
    updater->checkForUpdates();
    updater->checkForUpdates();
    ASSERT_TRUE(waitForHeading(upToDate));
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 1);
}

TEST_F(UpdaterControllerTest, refreshesWhereTheUserAskedHoweverYoungTheLists)
{
    start().checkForUpdates();
    ASSERT_TRUE(waitForHeading(upToDate));
    EXPECT_EQ(count(QStringLiteral("RefreshCache")), 1);
}

TEST_F(UpdaterControllerTest, cancelsACheckAtOnce)
{
    service.on(QStringLiteral("RefreshCache"), [](const FakeTransaction & /*silent*/) {});
    start().checkForUpdates();
    ASSERT_TRUE(waitForCalls(QStringLiteral("RefreshCache"), 1));
    dialogs->answer(UpdateAction::cancel);
    EXPECT_FALSE(dialogs->isOpen);
    EXPECT_TRUE(updater->canCheckForUpdates());
    EXPECT_TRUE(waitUntil(
        [this] { return service.transaction(QStringLiteral("RefreshCache"))->isCancelled; }));
    letTicksPass();
    EXPECT_EQ(dialogs->headings, QStringList(checking)) << "a cancelled check tells nothing";
}

TEST_F(UpdaterControllerTest, mayBeAskedAgainRightAfterACancel)
{
    start().checkForUpdates();
    dialogs->answer(UpdateAction::cancel);
    updater->checkForUpdates();
    EXPECT_TRUE(waitForHeading(upToDate));
    EXPECT_EQ(dialogs->headings, QStringList({checking, checking, upToDate}));
}

TEST_F(UpdaterControllerTest, tellsAnErrorWithItsDetails)
{
    service.on(QStringLiteral("RefreshCache"), [](const FakeTransaction &transaction) {
        transaction.fail(48, QStringLiteral("pk"));
    });
    start().checkForUpdates();
    ASSERT_TRUE(waitForHeading(QStringLiteral("Updates could not be checked")));
    EXPECT_EQ(dialogs->notice.text,
              QStringLiteral("You are not permitted to do this, or no password was given."));
    EXPECT_EQ(dialogs->notice.details, QStringLiteral("pk"));
}

TEST_F(UpdaterControllerTest, tellsWhereThereIsNoBus)
{
    connection = QDBusConnection(QStringLiteral("none"));
    start().checkForUpdates();
    EXPECT_TRUE(waitForHeading(QStringLiteral("Updates could not be checked")));
    EXPECT_TRUE(updater->canCheckForUpdates());
}

TEST_F(UpdaterControllerTest, tellsWhereTheServiceAnswersNoCall)
{
    callTimeout = 100ms;
    service.ignore(QStringLiteral("CreateTransaction"));
    start().checkForUpdates();
    EXPECT_TRUE(waitForHeading(QStringLiteral("Updates could not be checked")));
}

TEST_F(UpdaterControllerTest, tellsWhereTheServiceAnswersNoCallOfAnInstallation)
{
    callTimeout = 2s;
    start();
    ASSERT_TRUE(checkAndOffer());
    service.ignore(QStringLiteral("CreateTransaction"));
    dialogs->answer(UpdateAction::install);
    EXPECT_TRUE(waitForHeading(QStringLiteral("The update could not be installed")));
}

TEST_F(UpdaterControllerTest, asksForARestartWhereTheProgramWasUpgradedUnderIt)
{
    isReplaced = true;
    start().checkForUpdates();
    EXPECT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.0-1 is installed")));
}

TEST_F(UpdaterControllerTest, installsWhatItOffered)
{
    start();
    ASSERT_TRUE(startInstalling());
    EXPECT_FALSE(updater->canCheckForUpdates());
    EXPECT_EQ(installation()->arguments, QVariantList({qulonglong(2), QStringList(updateId)}));
    EXPECT_TRUE(installation()->hints.contains(QStringLiteral("interactive=true")));
    EXPECT_EQ(dialogs->notice.heading, installing);

    installation()->finish();
    ASSERT_TRUE(waitForHeading(installedHeading));
    EXPECT_TRUE(updater->canCheckForUpdates());
    dialogs->answer(UpdateAction::restartNow);
    EXPECT_EQ(relaunches, 1);
}

TEST_F(UpdaterControllerTest, showsTheProgressOfTheDownloadAndTheInstallationOnly)
{
    start();
    ASSERT_TRUE(startInstalling());
    const auto shows = [this](const char *text, std::optional<int> percentage) {
        return waitUntil([&] {
            return dialogs->notice.text == QString::fromUtf8(text) &&
                   dialogs->notice.progress == UpdateProgress{percentage};
        });
    };
    const QString status = QStringLiteral("Status");
    const QString percentage = QStringLiteral("Percentage");
    installation()->set({{status, 27U}, {percentage, 100U}});
    installation()->set({{status, 31U}});
    EXPECT_TRUE(shows("Waiting for your permission…", {}));
    installation()->set({{status, 8U}});
    EXPECT_TRUE(shows("Downloading…", {})) << "the 100 was the cache's";
    installation()->set({{percentage, 40U}});
    EXPECT_TRUE(shows("Downloading…", 40));
    installation()->set({{status, 9U}});
    EXPECT_TRUE(shows("Installing…", {})) << "the 40 was the download's";
    installation()->set({{status, 9U}, {percentage, 70U}});
    EXPECT_TRUE(shows("Installing…", 70));
    installation()->set({{percentage, 101U}, {QStringLiteral("AllowCancel"), false}});
    EXPECT_TRUE(waitUntil([this] { return !dialogs->notice.buttons.first().isEnabled; }));
    EXPECT_TRUE(shows("Installing…", 70));
}

TEST_F(UpdaterControllerTest, cancelsAnInstallationOnceTheServiceHasStopped)
{
    start();
    ASSERT_TRUE(startInstalling());
    dialogs->answer(UpdateAction::cancel);
    EXPECT_TRUE(dialogs->isOpen);
    EXPECT_FALSE(dialogs->notice.buttons.first().isEnabled);
    ASSERT_TRUE(waitUntil([this] { return installation()->isCancelled; }));
    EXPECT_FALSE(updater->canCheckForUpdates());
    installation()->errorCode(17, QStringLiteral("cancelled"));
    installation()->finish(3);
    EXPECT_TRUE(waitUntil([this] { return updater->canCheckForUpdates(); }));
    EXPECT_FALSE(dialogs->isOpen);
}

TEST_F(UpdaterControllerTest, installsAgainAfterACancel)
{
    start();
    ASSERT_TRUE(startInstalling());
    installation()->set({{QStringLiteral("Status"), 9U}, {QStringLiteral("Percentage"), 70U}});
    ASSERT_TRUE(waitUntil([this] { return dialogs->notice.progress == UpdateProgress{70}; }));
    dialogs->answer(UpdateAction::cancel);
    installation()->finish(3);
    ASSERT_TRUE(waitUntil([this] { return updater->canCheckForUpdates(); }));
    ASSERT_TRUE(checkAndOffer());
    dialogs->answer(UpdateAction::install);
    EXPECT_EQ(dialogs->notice.heading, installing);
    EXPECT_EQ(dialogs->notice.progress, UpdateProgress{}) << "the 70 was the other one's";
    EXPECT_TRUE(dialogs->notice.buttons.first().isEnabled) << "it is not being cancelled";
}

TEST_F(UpdaterControllerTest, offersAScheduledFindAfterTheUsersCheckWasCancelled)
{
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 1));
    ASSERT_TRUE(waitUntil([this] { return updater->canCheckForUpdates(); }));
    updater->checkForUpdates();
    dialogs->answer(UpdateAction::cancel);
    offer(updateId);
    now = now.addDays(1);
    EXPECT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.1-1 is available")));
}

TEST_F(UpdaterControllerTest, stopsAScheduledCheckForAnInstallation)
{
    offer(updateId);
    start(true);
    ASSERT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.1-1 is available")));
    service.on(QStringLiteral("SearchFiles"), [](const FakeTransaction & /*silent*/) {});
    now = now.addDays(1);
    ASSERT_TRUE(waitForCalls(QStringLiteral("SearchFiles"), 2));
    dialogs->answer(UpdateAction::install);
    EXPECT_TRUE(waitUntil(
        [this] { return service.transaction(QStringLiteral("SearchFiles"))->isCancelled; }));
}

TEST(UpdaterSystem, isThatOfTheRunningProgram)
{
    const UpdaterSystem system = UpdaterSystem::real();
    EXPECT_EQ(system.executable, QCoreApplication::applicationFilePath());
    EXPECT_FALSE(system.isReplaced());
    EXPECT_LT(std::abs(system.now().secsTo(QDateTime::currentDateTimeUtc())), 60);
    EXPECT_TRUE(system.relaunch);
    EXPECT_NE(system.dialogs, nullptr);
}

TEST(UpdaterSystem, hasAConnectionOfItsOwnToTheSystemBus)
{
    const PrivateBus bus;
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toLocal8Bit());
    const UpdaterSystem system = UpdaterSystem::real();
    EXPECT_TRUE(system.bus().isConnected());
    EXPECT_EQ(system.bus().baseService(), system.bus().baseService());
    EXPECT_NE(system.bus().baseService(), QDBusConnection::systemBus().baseService());
    PrivateBus::disconnect(system.bus());
    QDBusConnection::disconnectFromBus(QDBusConnection::systemBus().name());
}

TEST_F(UpdaterControllerTest, tellsAnInstallationThatCouldNoLongerBeCancelled)
{
    start();
    ASSERT_TRUE(startInstalling());
    dialogs->answer(UpdateAction::cancel);
    installation()->finish();
    EXPECT_TRUE(waitForHeading(installedHeading));
}

TEST_F(UpdaterControllerTest, tellsAnInstallationThatSomebodyElseCancelled)
{
    start();
    ASSERT_TRUE(startInstalling());
    installation()->finish(3);
    EXPECT_TRUE(waitForHeading(QStringLiteral("The update could not be installed")));
}

TEST_F(UpdaterControllerTest, goesOnInstallingWhileItsDialogIsClosed)
{
    start();
    ASSERT_TRUE(startInstalling());
    dialogs->answer(dialogs->notice.onClose);
    EXPECT_FALSE(dialogs->isOpen);
    updater->checkForUpdates();
    EXPECT_TRUE(dialogs->isOpen);
    EXPECT_EQ(dialogs->notice.heading, installing) << "asked again, it shows what runs";
    dialogs->answer(dialogs->notice.onClose);
    installation()->finish();
    EXPECT_TRUE(waitForHeading(installedHeading));
    EXPECT_EQ(dialogs->openings.last(), Focus::leave);
}

TEST_F(UpdaterControllerTest, tellsWhereTheNewVersionCannotBeStarted)
{
    start();
    canRelaunch = false;
    ASSERT_TRUE(startInstalling());
    installation()->finish();
    ASSERT_TRUE(waitForHeading(installedHeading));
    dialogs->answer(UpdateAction::restartNow);
    EXPECT_EQ(dialogs->notice.heading, QStringLiteral("Tidewick could not be restarted"));
    EXPECT_TRUE(dialogs->isOpen);
}

struct InstallationRow
{
    const char *name;
    uint code;
    UpdateError error;
};

class FailingInstallation : public UpdaterControllerTest,
                            public testing::WithParamInterface<InstallationRow>
{
};

TEST_P(FailingInstallation, isTold)
{
    start();
    ASSERT_TRUE(startInstalling());
    installation()->fail(GetParam().code, QStringLiteral("its words"));
    ASSERT_TRUE(waitForHeading(QStringLiteral("The update could not be installed")));
    EXPECT_EQ(dialogs->notice.text, sentence(GetParam().error));
    EXPECT_EQ(dialogs->notice.details, QStringLiteral("its words"));
    EXPECT_TRUE(updater->canCheckForUpdates());
}

INSTANTIATE_TEST_SUITE_P(Rows, FailingInstallation,
                         testing::Values(InstallationRow{"badHash", 10, UpdateError::download},
                                         InstallationRow{"locked", 26, UpdateError::locked},
                                         InstallationRow{"refused", 48, UpdateError::notAuthorized},
                                         InstallationRow{"unsigned", 50, UpdateError::untrusted},
                                         InstallationRow{"dead", 64, UpdateError::sources}),
                         rowName);

TEST_F(UpdaterControllerTest, tellsAServiceThatDiesWhileItInstalls)
{
    start();
    ASSERT_TRUE(startInstalling());
    service.die();
    ASSERT_TRUE(waitForHeading(QStringLiteral("The update could not be installed")));
    EXPECT_EQ(dialogs->notice.text, sentence(UpdateError::vanished));
}

TEST_F(UpdaterControllerTest, checksNothingByItselfWithoutItsSchedule)
{
    start(false);
    letTicksPass();
    EXPECT_EQ(service.calls(), QStringList());
}

TEST_F(UpdaterControllerTest, checksBySchedule)
{
    start(true);
    EXPECT_EQ(service.calls(), QStringList()) << "not at the very start";
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 1));
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 1) << "once a day";
    EXPECT_EQ(count(QStringLiteral("RefreshCache")), 0) << "the lists are young";
    EXPECT_EQ(dialogs->headings, QStringList()) << "nothing found, nothing shown";
    EXPECT_TRUE(service.transaction(QStringLiteral("SearchFiles"))
                    ->hints.contains(QStringLiteral("interactive=false")));

    now = now.addSecs(qint64(24) * 3600);
    EXPECT_TRUE(waitForCalls(QStringLiteral("Resolve"), 2));
}

TEST_F(UpdaterControllerTest, checksOnceBeforeTheFirstTick)
{
    tick = 1h;
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 1));
    now = now.addDays(1);
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 1);
}

TEST_F(UpdaterControllerTest, survivesAClockThatIsSet)
{
    const auto waitForChecks = [this](qsizetype times) {
        return waitForCalls(QStringLiteral("Resolve"), times) &&
               waitUntil([this] { return updater->canCheckForUpdates(); });
    };
    start(true);
    ASSERT_TRUE(waitForChecks(1));
    now = now.addYears(-30);
    ASSERT_TRUE(waitForChecks(2));
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 2) << "no storm";
    now = now.addYears(30);
    ASSERT_TRUE(waitForChecks(3));
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 3);
}

TEST_F(UpdaterControllerTest, staysSilentWhereAScheduledCheckFails)
{
    service.on(QStringLiteral("GetUpdates"),
               [](const FakeTransaction &transaction) { transaction.fail(4, {}); });
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("GetUpdates"), 1));
    letTicksPass();
    EXPECT_EQ(dialogs->headings, QStringList());
    EXPECT_EQ(count(QStringLiteral("GetUpdates")), 1);
}

TEST_F(UpdaterControllerTest, offersAScheduledFindWithoutTakingTheFocus)
{
    offer(updateId);
    start(true);
    ASSERT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.1-1 is available")));
    EXPECT_EQ(dialogs->openings, QList<Focus>({Focus::leave}));
}

TEST_F(UpdaterControllerTest, remindsLaterOfAnotherVersionOnly)
{
    offer(updateId);
    start(true);
    ASSERT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.1-1 is available")));
    dialogs->answer(UpdateAction::remindMeLater);
    EXPECT_FALSE(dialogs->isOpen);

    now = now.addDays(1);
    ASSERT_TRUE(waitForCalls(QStringLiteral("GetUpdates"), 2));
    letTicksPass();
    EXPECT_FALSE(dialogs->isOpen) << "the same version";

    offer(newerId);
    now = now.addDays(1);
    EXPECT_TRUE(waitForHeading(QStringLiteral("Tidewick 1.2-1 is available")));
}

TEST_F(UpdaterControllerTest, offersAPostponedVersionToTheUserWhoAsks)
{
    start();
    ASSERT_TRUE(checkAndOffer());
    dialogs->answer(UpdateAction::remindMeLater);
    EXPECT_TRUE(checkAndOffer());
}

TEST_F(UpdaterControllerTest, showsAScheduledCheckToTheUserWhoAsksMeanwhile)
{
    service.on(QStringLiteral("SearchFiles"), [](const FakeTransaction & /*silent*/) {});
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("SearchFiles"), 1));
    EXPECT_FALSE(updater->canCheckForUpdates());
    updater->checkForUpdates();
    EXPECT_EQ(dialogs->notice.heading, checking);
    const auto search = service.transaction(QStringLiteral("SearchFiles"));
    search->package(infoInstalled, installedId);
    search->finish();
    EXPECT_TRUE(waitForHeading(upToDate));
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 1);
}

TEST_F(UpdaterControllerTest, looksAgainWithoutARefreshWhereTheServiceKnowsMore)
{
    echo = 0ms;
    service.setAge(4294967295);
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 1));
    ASSERT_EQ(count(QStringLiteral("RefreshCache")), 1);
    ASSERT_TRUE(waitUntil([this] { return updater->canCheckForUpdates(); }));
    service.signal("TransactionListChanged");
    letTicksPass();
    ASSERT_EQ(count(QStringLiteral("SearchFiles")), 1) << "that signal says nothing of updates";
    service.signal("UpdatesChanged");
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 2));
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 2);
    EXPECT_EQ(count(QStringLiteral("RefreshCache")), 1) << "or it would go on for ever";
}

TEST_F(UpdaterControllerTest, ignoresTheEchoOfItsOwnRefresh)
{
    start(true);
    ASSERT_TRUE(waitForCalls(QStringLiteral("Resolve"), 1));
    ASSERT_TRUE(waitUntil([this] { return updater->canCheckForUpdates(); }));
    service.signal("UpdatesChanged");
    letTicksPass();
    EXPECT_EQ(count(QStringLiteral("SearchFiles")), 1);
}

TEST_F(UpdaterControllerTest, mayGoWhileItChecksOrInstalls)
{
    start().checkForUpdates();
    updater.reset();
    letTicksPass();
    service.on(QStringLiteral("RefreshCache"), [](const FakeTransaction & /*silent*/) {});
    start().checkForUpdates();
    ASSERT_TRUE(waitForCalls(QStringLiteral("RefreshCache"), 1));
    updater.reset();
    EXPECT_TRUE(waitUntil(
        [this] { return service.transaction(QStringLiteral("RefreshCache"))->isCancelled; }));
    service.on(QStringLiteral("RefreshCache"),
               [](const FakeTransaction &transaction) { transaction.finish(); });
    start();
    ASSERT_TRUE(startInstalling());
    const auto running = installation();
    updater.reset();
    letTicksPass();
    EXPECT_FALSE(running->isCancelled) << "what is half installed is finished";
}
