#include "app/AppDelegate.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPalette>
#include <QTimer>

using namespace tidewick;

namespace
{

/// What each part of the desktop was told, in order, one line a call, and what the test plays back.
struct Record
{
    void log(const QString &line) { lines.append(line); }

    QStringList lines;
    QImage image;
    StatusTitle title;
    QList<MenuItem> menu; // the last one attached
    std::function<void()> action;
    std::optional<ClickEvent> event;
    bool isPopoverShown = false;
    Panel *panel = nullptr;
    Settings *settings = nullptr;
    LoginItemStatus loginItemStatus = LoginItemStatus::notRegistered;
    std::optional<QString> loginItemError;
    bool canCheckForUpdates = true;
    std::function<void(const Surroundings &)> surroundings;
};

class RecordingStatusItem : public StatusItem
{
public:
    explicit RecordingStatusItem(Record &record) : m_record(record) {}

    void setImage(const QImage &image, QSize points) override
    {
        m_record.image = image;
        m_record.log(QStringLiteral("image %1x%2").arg(points.width()).arg(points.height()));
    }
    void setAttributedTitle(const StatusTitle &title) override
    {
        m_record.title = title;
        m_record.log(QStringLiteral("title '%1'").arg(title.text));
    }
    void setImagePosition(ImagePosition position) override
    {
        EXPECT_EQ(position, ImagePosition::leading);
        m_record.log(QStringLiteral("image leading"));
    }
    void setToolTip(const QString &title, const QString &text) override
    {
        m_record.log(QStringLiteral("tooltip '%1' '%2'").arg(title, text));
    }
    void setAction(const std::function<void()> &action) override
    {
        m_record.action = action;
        m_record.log(QStringLiteral("action"));
    }
    std::optional<ClickEvent> currentEvent() const override { return m_record.event; }
    void setMenu(const QList<MenuItem> &items) override
    {
        if (!items.isEmpty())
            m_record.menu = items;
        m_record.log(QStringLiteral("menu of %1").arg(items.size()));
    }
    void performClick() override { m_record.log(QStringLiteral("click")); }

private:
    Record &m_record;
};

class RecordingPopover : public Popover
{
public:
    explicit RecordingPopover(Record &record) : m_record(record) {}

    void setContentSize(QSize points) override
    {
        m_record.log(QStringLiteral("popover %1x%2").arg(points.width()).arg(points.height()));
    }
    void setBehavior(PopoverBehavior behavior) override
    {
        EXPECT_EQ(static_cast<int>(behavior), 1);
        m_record.log(QStringLiteral("transient"));
    }
    void setContentView(const QUrl &view, const QVariantMap &properties) override
    {
        m_record.panel = properties.value(QStringLiteral("panel")).value<Panel *>();
        m_record.log(QStringLiteral("view ") + view.fileName());
    }
    void makeReady() override { m_record.log(QStringLiteral("ready")); }
    bool isShown() const override { return m_record.isPopoverShown; }
    void show(const std::optional<ClickEvent> &event) override
    {
        if (!event) {
            m_record.log(QStringLiteral("show"));
            return;
        }
        const QPoint at = event->position.value_or(QPoint());
        m_record.log(QStringLiteral("show at %1,%2").arg(at.x()).arg(at.y()));
    }
    void performClose() override { m_record.log(QStringLiteral("close")); }
    void becomeKey() override { m_record.log(QStringLiteral("key")); }

private:
    Record &m_record;
};

class RecordingWorkspace : public Workspace
{
public:
    explicit RecordingWorkspace(Record &record) : m_record(record) {}

    void openUrl(const QUrl &url) override
    {
        m_record.log(QStringLiteral("open ") + url.toString());
    }
    void revealDirectory(const QString &path) override
    {
        m_record.log(QStringLiteral("reveal ") + path);
    }

private:
    Record &m_record;
};

class RecordingLoginItem : public LoginItem
{
public:
    explicit RecordingLoginItem(Record &record) : m_record(record) {}

    LoginItemStatus status() const override
    {
        m_record.log(QStringLiteral("login item?"));
        return m_record.loginItemStatus;
    }
    std::optional<QString> registerItem() override
    {
        m_record.log(QStringLiteral("register"));
        return m_record.loginItemError;
    }
    std::optional<QString> unregisterItem() override
    {
        m_record.log(QStringLiteral("unregister"));
        return m_record.loginItemError;
    }

private:
    Record &m_record;
};

class RecordingSettingsWindow : public SettingsWindow
{
public:
    explicit RecordingSettingsWindow(Record &record) : m_record(record) {}

    void setContentView(const QUrl &view, const QVariantMap &properties) override
    {
        m_record.settings = properties.value(QStringLiteral("settings")).value<Settings *>();
        const bool isOn = properties.value(QStringLiteral("launchAtLogin")).toBool();
        m_record.log(
            QStringLiteral("view %1 %2")
                .arg(view.fileName(), isOn ? QStringLiteral("on") : QStringLiteral("off")));
    }
    void setTitle(const QString &title) override
    {
        m_record.log(QStringLiteral("called ") + title);
    }
    void setStyleMask(WindowStyle style) override
    {
        m_record.log(QStringLiteral("style %1").arg(static_cast<int>(style)));
    }
    void setContentSize(QSize points) override
    {
        m_record.log(QStringLiteral("window %1x%2").arg(points.width()).arg(points.height()));
    }
    void center() override { m_record.log(QStringLiteral("center")); }
    void makeKeyAndOrderFront() override { m_record.log(QStringLiteral("front")); }
    void activateIgnoringOtherApps() override { m_record.log(QStringLiteral("activate")); }

private:
    Record &m_record;
};

class RecordingAppearance : public Appearance
{
public:
    explicit RecordingAppearance(Record &record) : m_record(record) {}

    void observe(std::function<void(const Surroundings &)> observer) override
    {
        m_record.surroundings = observer;
        observer({true, false, false});
    }

private:
    Record &m_record;
};

class RecordingUpdater : public Updater
{
public:
    explicit RecordingUpdater(Record &record) : m_record(record) {}

    void checkForUpdates() override { m_record.log(QStringLiteral("check for updates")); }
    bool canCheckForUpdates() const override { return m_record.canCheckForUpdates; }

private:
    Record &m_record;
};

class AppDelegateTest : public testing::Test
{
protected:
    ~AppDelegateTest() override
    {
        delegate.reset();
        m_workers.waitForDone();
        QCoreApplication::processEvents();
    }

    /// What the status item does on a click of the user's.
    void click(ClickType type)
    {
        record.event = ClickEvent{type, QPoint(7, 8)};
        record.action();
        record.event.reset();
    }

    /// What is logged from now on, until the end of `act`.
    template <class Act>
    QStringList logOf(Act act)
    {
        record.lines.clear();
        act();
        return record.lines;
    }

    Record record;
    QByteArray lsofOutput = "header\n";

private:
    template <class Part>
    std::function<std::unique_ptr<Part>()> make()
    {
        return [this] {
            return std::make_unique<Part>(record);
        };
    }

    SystemInterfaces m_system{
        std::make_shared<RecordingToolRunner>([this](const auto &, const auto &) {
            return ToolResult{lsofOutput, 0};
        }),
        ToolTable::stock(), RecordingHttpClient::refusing()};
    Workers m_workers;

protected:
    std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(
        m_system, m_workers,
        Desktop{[this](bool isStarting) {
                    record.log(isStarting ? QStringLiteral("updater starting")
                                          : QStringLiteral("updater"));
                    return std::make_unique<RecordingUpdater>(record);
                },
                make<RecordingStatusItem>(), make<RecordingPopover>(), make<RecordingWorkspace>(),
                make<RecordingLoginItem>(), make<RecordingSettingsWindow>(),
                make<RecordingAppearance>()});
};

/// The log's lines from one text.
QStringList lines(const char *text)
{
    return QString::fromUtf8(text).split(QStringLiteral("; "));
}

const QByteArray threeListeners = "header\n"
                                  "node 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                                  "node 1 a 4u IPv4 0x1 0t0 TCP *:3001 (LISTEN)\n"
                                  "python3 2 a 3u IPv4 0x1 0t0 TCP *:7000 (LISTEN)\n";

} // namespace

TEST_F(AppDelegateTest, startsTheUpdaterAndBuildsNothingElseBeforeLaunchHasFinished)
{
    delegate->updateStatusIcon(3);
    delegate->togglePopover();
    delegate->activate();
    EXPECT_EQ(record.lines, lines("updater starting"));
}

TEST_F(AppDelegateTest, showsTheIconAloneAtLaunch)
{
    EXPECT_EQ(logOf([this] { delegate->applicationDidFinishLaunching(); }),
              lines("image 18x18; title ''; action; menu of 0; popover 480x540; transient; "
                    "image 18x18; title ''; tooltip 'Tidewick' 'No active services'; "
                    "view ContentView.qml; ready"));
    EXPECT_EQ(record.image, QImage(QStringLiteral(":/menubar_icon.png")));
}

TEST_F(AppDelegateTest, showsTheNumberOfListenersOnceTheyAreKnown)
{
    lsofOutput = threeListeners;
    delegate->applicationDidFinishLaunching();
    record.lines.clear();
    ASSERT_TRUE(waitUntil([this] { return !record.lines.isEmpty(); }));
    EXPECT_EQ(record.lines, lines("image 18x18; title '3'; image leading; "
                                  "tooltip 'Tidewick' '3 running, 2 live'; ready"));
}

TEST_F(AppDelegateTest, makesThePanelReadyAgainForItsFirstCardsOnly)
{
    delegate->applicationDidFinishLaunching();
    const auto isReady = [this] {
        return record.lines.contains(QStringLiteral("ready"));
    };
    record.lines.clear();
    const auto refresh = [this] {
        record.lines.clear();
        record.panel->refresh();
        return waitUntil([this] { return !record.lines.isEmpty(); });
    };
    ASSERT_TRUE(waitUntil([this] { return !record.lines.isEmpty(); }));
    EXPECT_FALSE(isReady());
    lsofOutput = threeListeners;
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(isReady());
    ASSERT_TRUE(refresh());
    EXPECT_FALSE(isReady());
}

TEST_F(AppDelegateTest, showsTheIconAloneOnceTheLastListenerIsGone)
{
    lsofOutput = threeListeners;
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(waitUntil([this] { return record.title.text == QLatin1String("3"); }));
    ASSERT_TRUE(waitUntil([this] { return !record.panel->isLoading(); }));
    lsofOutput = "header\n";
    record.lines.clear();
    record.panel->refresh();
    ASSERT_TRUE(waitUntil([this] { return record.lines.size() >= 3; }));
    EXPECT_EQ(record.lines,
              lines("image 18x18; title ''; tooltip 'Tidewick' 'No active services'"));
    EXPECT_EQ(record.title.text, QString());
}

TEST_F(AppDelegateTest, titleIsPlainDecimalInItsFont)
{
    delegate->applicationDidFinishLaunching();
    delegate->updateStatusIcon(12345);
    EXPECT_EQ(record.title, (StatusTitle{QStringLiteral("12345"), 14, QFont::Medium, 1}));
}

TEST_F(AppDelegateTest, zeroEmptiesTheTitleAndLeavesTheImageWhereItWas)
{
    delegate->applicationDidFinishLaunching();
    delegate->updateStatusIcon(3);
    EXPECT_EQ(logOf([this] { delegate->updateStatusIcon(0); }), lines("image 18x18; title ''"));
}

TEST_F(AppDelegateTest, toggleWithoutAClickDoesNothing)
{
    delegate->applicationDidFinishLaunching();
    EXPECT_TRUE(logOf([this] { delegate->togglePopover(); }).isEmpty());
}

TEST_F(AppDelegateTest, leftClickShowsThePanelWithTheKeyboardAndStartsNoRefresh)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_TRUE(waitUntil([this] { return !record.panel->isLoading(); }));
    EXPECT_EQ(logOf([this] { click(ClickType::leftMouseUp); }), lines("show at 7,8; key"));
    QCoreApplication::processEvents();
    EXPECT_FALSE(record.panel->isLoading());
}

TEST_F(AppDelegateTest, activationShowsThePanelWithTheKeyboardWhereverItIs)
{
    delegate->applicationDidFinishLaunching();
    for (const bool isShown : {false, true}) {
        record.isPopoverShown = isShown;
        EXPECT_EQ(logOf([this] { delegate->activate(); }), lines("show; key"));
    }
}

TEST_F(AppDelegateTest, leftClickClosesAShownPanel)
{
    delegate->applicationDidFinishLaunching();
    record.isPopoverShown = true;
    EXPECT_EQ(logOf([this] { click(ClickType::leftMouseUp); }), lines("close"));
}

TEST_F(AppDelegateTest, rightClickOpensTheMenuAndDetachesItAgain)
{
    delegate->applicationDidFinishLaunching();
    for (const bool isShown : {false, true}) {
        record.isPopoverShown = isShown;
        EXPECT_EQ(logOf([this] { click(ClickType::rightMouseUp); }),
                  lines("menu of 4; click; menu of 0"));
    }
    record.isPopoverShown = false;
    EXPECT_EQ(logOf([this] { click(ClickType::leftMouseUp); }), lines("show at 7,8; key"));
}

TEST_F(AppDelegateTest, menuHoldsItsFourEntries)
{
    delegate->applicationDidFinishLaunching();
    click(ClickType::rightMouseUp);
    QStringList entries;
    for (const MenuItem &item : record.menu)
        entries.append(item.title + QLatin1Char('|') + item.keyEquivalent);
    EXPECT_EQ(entries, lines("Check for Updates...|; Settings...|,; |; Quit Tidewick|q"));
}

TEST_F(AppDelegateTest, menuChecksForUpdatesUnlessACheckRuns)
{
    delegate->applicationDidFinishLaunching();
    click(ClickType::rightMouseUp);
    EXPECT_TRUE(record.menu[0].isEnabled);
    EXPECT_EQ(logOf(record.menu[0].action), lines("check for updates"));
    record.canCheckForUpdates = false;
    click(ClickType::rightMouseUp);
    EXPECT_FALSE(record.menu[0].isEnabled);
}

TEST_F(AppDelegateTest, menuQuitsTheApplication)
{
    delegate->applicationDidFinishLaunching();
    click(ClickType::rightMouseUp);
    QTimer::singleShot(0, record.menu[3].action);
    QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(AppDelegateTest, settingsAreMadeOnceAndShownAgain)
{
    delegate->applicationDidFinishLaunching();
    click(ClickType::rightMouseUp);
    const auto showSettings = record.menu[1].action;
    EXPECT_EQ(logOf(showSettings),
              lines("login item?; view SettingsView.qml off; called Tidewick Settings; style 3; "
                    "window 320x150; center; front; activate"));
    record.loginItemStatus = LoginItemStatus::enabled;
    EXPECT_EQ(logOf(showSettings), lines("front; activate"));
}

struct ToggleRow
{
    const char *name;
    LoginItemStatus status;
    const char *view;
};

class SettingsToggle : public AppDelegateTest, public testing::WithParamInterface<ToggleRow>
{
};

TEST_P(SettingsToggle, isOnExactlyWhereTheLoginItemIsEnabled)
{
    record.loginItemStatus = GetParam().status;
    EXPECT_EQ(logOf([this] { delegate->showSettings(); })[1], QString::fromUtf8(GetParam().view));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SettingsToggle,
    testing::Values(ToggleRow{"notRegistered", LoginItemStatus::notRegistered,
                              "view SettingsView.qml off"},
                    ToggleRow{"enabled", LoginItemStatus::enabled, "view SettingsView.qml on"},
                    ToggleRow{"requiresApproval", LoginItemStatus::requiresApproval,
                              "view SettingsView.qml off"},
                    ToggleRow{"notFound", LoginItemStatus::notFound, "view SettingsView.qml off"}),
    rowName);

TEST_F(AppDelegateTest, settingsRegisterAndUnregisterTheLoginItem)
{
    delegate->showSettings();
    EXPECT_EQ(logOf([this] { record.settings->setLaunchAtLogin(true); }), lines("register"));
    EXPECT_EQ(logOf([this] { record.settings->setLaunchAtLogin(false); }), lines("unregister"));
}

TEST_F(AppDelegateTest, failedRegistrationIsOneLine)
{
    delegate->showSettings();
    record.loginItemError = QStringLiteral("Read-only file system");
    testing::internal::CaptureStdout();
    record.settings->setLaunchAtLogin(true);
    record.settings->setLaunchAtLogin(false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Failed to enable launch at login: Read-only file system\n"
              "Failed to disable launch at login: Read-only file system\n");
}

TEST_F(AppDelegateTest, panelFollowsTheSurroundings)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_NE(record.panel, nullptr);
    EXPECT_EQ(record.panel->backdrop(), Panel::Translucent);
    EXPECT_FALSE(record.panel->reducesMotion());
    record.surroundings({true, true, true});
    EXPECT_EQ(record.panel->backdrop(), Panel::Blurred);
    EXPECT_TRUE(record.panel->reducesMotion());
    record.surroundings({false, false, false});
    EXPECT_EQ(record.panel->backdrop(), Panel::Opaque);
    EXPECT_FALSE(record.panel->reducesMotion());
}

TEST_F(AppDelegateTest, windowsFollowTheColorScheme)
{
    delegate->applicationDidFinishLaunching();
    const auto lightness = [] {
        return QGuiApplication::palette().color(QPalette::Window).lightness();
    };
    EXPECT_GT(lightness(), 200);
    record.surroundings({.colorScheme = ColorScheme::dark});
    EXPECT_LT(lightness(), 80);
    record.surroundings({.colorScheme = ColorScheme::any});
    EXPECT_GT(lightness(), 200);
}

TEST_F(AppDelegateTest, panelOpensRevealsAndQuits)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_NE(record.panel, nullptr);
    record.lines.clear();
    record.panel->openPort(QStringLiteral("3000"));
    record.panel->openPort(QStringLiteral("99999999"));
    record.panel->revealDirectory(QStringLiteral("/srv/shop"));
    EXPECT_EQ(record.lines, lines("open http://localhost:3000; reveal /srv/shop"));
    QTimer::singleShot(0, record.panel, &Panel::quit);
    QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST(StatusImage, comesFromTheProgramsIcon)
{
    EXPECT_EQ(statusImage(QStringLiteral(":/menubar_icon.png")),
              QImage(QStringLiteral(":/menubar_icon.png")));
    EXPECT_EQ(QImage(QStringLiteral(":/menubar_icon.png")).size(), QSize(144, 144));
}

TEST(StatusImage, fallsBackToTheNetworkSymbol)
{
    const QImage fallback = statusImage(QStringLiteral(":/missing.png"));
    EXPECT_EQ(fallback.size(), QSize(144, 144));
    EXPECT_NE(fallback, statusImage(QStringLiteral(":/menubar_icon.png")));
    EXPECT_NE(fallback.pixelColor(72, 16).alpha(), 0); // on the globe's rim
    EXPECT_EQ(fallback.pixelColor(0, 0).alpha(), 0);
}

struct SummaryRow
{
    const char *name;
    int running;
    int live;
    const char *text;
};

class StatusSummary : public testing::TestWithParam<SummaryRow>
{
};

TEST_P(StatusSummary, tellsWhatRunsAndWhatAnswers)
{
    QList<PortInfo> records;
    for (int i = 0; i < GetParam().running; ++i) {
        PortInfo record(3000 + i, {}, {}, {}, {});
        record.isHttpAccessible = i < GetParam().live;
        records.append(record);
    }
    EXPECT_EQ(statusSummary(records), QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Rows, StatusSummary,
                         testing::Values(SummaryRow{"none", 0, 0, "No active services"},
                                         SummaryRow{"noneLive", 3, 0, "3 running"},
                                         SummaryRow{"someLive", 3, 2, "3 running, 2 live"},
                                         SummaryRow{"oneLive", 1, 1, "1 running, 1 live"},
                                         SummaryRow{"many", 1200, 1000, "1200 running, 1000 live"}),
                         rowName);
