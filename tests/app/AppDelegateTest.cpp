#include "app/AppDelegate.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QThreadPool>
#include <QTimer>

using namespace tidewick;

namespace
{

/// Shows nothing: writes down what it is told, one line a call.
class RecordingStatusItem : public StatusItem
{
public:
    struct Record
    {
        QStringList log;
        QImage image;
        StatusTitle title;
        QList<MenuItem> menu;
        std::function<void()> action;
        Panel *panel = nullptr;
    };

    explicit RecordingStatusItem(Record &record) : m_record(record) {}

    void setImage(const QImage &image, QSize points) override
    {
        m_record.image = image;
        log(QStringLiteral("image %1x%2").arg(points.width()).arg(points.height()));
    }
    void setAttributedTitle(const StatusTitle &title) override
    {
        m_record.title = title;
        log(QStringLiteral("title '%1'").arg(title.text));
    }
    void setImagePosition(ImagePosition position) override
    {
        EXPECT_EQ(position, ImagePosition::leading);
        log(QStringLiteral("image leading"));
    }
    void setToolTip(const QString &title, const QString &text) override
    {
        log(QStringLiteral("tooltip '%1' '%2'").arg(title, text));
    }
    void setMenu(const QList<MenuItem> &items) override
    {
        m_record.menu = items;
        log(QStringLiteral("menu"));
    }

    void setAction(const std::function<void()> &action) override
    {
        m_record.action = action;
        log(QStringLiteral("action"));
    }

private:
    void log(const QString &line) { m_record.log.append(line); }

    Record &m_record;
};

class RecordingPopover : public Popover
{
public:
    explicit RecordingPopover(RecordingStatusItem::Record &record) : m_record(record) {}

    void setContentSize(QSize points) override
    {
        log(QStringLiteral("popover %1x%2").arg(points.width()).arg(points.height()));
    }
    void setContentView(const QUrl &view, const QVariantMap &properties) override
    {
        m_record.panel = properties.value(QStringLiteral("panel")).value<Panel *>();
        log(QStringLiteral("view ") + view.fileName());
    }
    void toggle() override { log(QStringLiteral("toggle")); }

private:
    void log(const QString &line) { m_record.log.append(line); }

    RecordingStatusItem::Record &m_record;
};

class RecordingWorkspace : public Workspace
{
public:
    explicit RecordingWorkspace(RecordingStatusItem::Record &record) : m_record(record) {}

    void openUrl(const QUrl &url) override
    {
        m_record.log.append(QStringLiteral("open ") + url.toString());
    }
    void revealFolder(const QString &path) override
    {
        m_record.log.append(QStringLiteral("reveal ") + path);
    }

private:
    RecordingStatusItem::Record &m_record;
};

class AppDelegateTest : public testing::Test
{
protected:
    ~AppDelegateTest() override
    {
        delegate.reset();
        m_pool.waitForDone();
        QCoreApplication::processEvents();
    }

    RecordingStatusItem::Record item; // what each part of the desktop was told, in order
    QByteArray lsofOutput = "header\n";

private:
    SystemInterfaces m_system{
        std::make_shared<RecordingToolRunner>([this](const auto &, const auto &) {
            return ToolResult{lsofOutput, 0};
        }),
        ToolTable::stock(), RecordingHttpClient::refusing()};
    QThreadPool m_pool;

protected:
    std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(
        m_system, m_pool,
        Desktop{[this] { return std::make_unique<RecordingStatusItem>(item); },
                [this] { return std::make_unique<RecordingPopover>(item); },
                [this] {
                    return std::make_unique<RecordingWorkspace>(item);
                }});
};

const QByteArray threeListeners = "header\n"
                                  "node 1 a 3u IPv4 0x1 0t0 TCP *:3000 (LISTEN)\n"
                                  "node 1 a 4u IPv4 0x1 0t0 TCP *:3001 (LISTEN)\n"
                                  "python3 2 a 3u IPv4 0x1 0t0 TCP *:7000 (LISTEN)\n";

} // namespace

TEST_F(AppDelegateTest, buildsNothingBeforeLaunchHasFinished)
{
    delegate->updateStatusIcon(3);
    EXPECT_TRUE(item.log.isEmpty());
}

TEST_F(AppDelegateTest, showsTheIconAloneAtLaunch)
{
    delegate->applicationDidFinishLaunching();
    EXPECT_EQ(item.log, QStringList({QStringLiteral("image 18x18"), QStringLiteral("title ''"),
                                     QStringLiteral("action"), QStringLiteral("menu"),
                                     QStringLiteral("popover 480x540"),
                                     QStringLiteral("image 18x18"), QStringLiteral("title ''"),
                                     QStringLiteral("tooltip 'Tidewick' 'No active services'"),
                                     QStringLiteral("view ContentView.qml")}));
    EXPECT_FALSE(item.image.isNull());
}

TEST_F(AppDelegateTest, showsTheNumberOfListenersOnceTheyAreKnown)
{
    lsofOutput = threeListeners;
    delegate->applicationDidFinishLaunching();
    item.log.clear();
    ASSERT_TRUE(waitUntil([this] { return !item.log.isEmpty(); }));
    EXPECT_EQ(item.log, QStringList({QStringLiteral("image 18x18"), QStringLiteral("title '3'"),
                                     QStringLiteral("image leading"),
                                     QStringLiteral("tooltip 'Tidewick' '3 running, 2 live'")}));
}

TEST_F(AppDelegateTest, titleIsPlainDecimalInItsFont)
{
    delegate->applicationDidFinishLaunching();
    delegate->updateStatusIcon(12345);
    EXPECT_EQ(item.title, (StatusTitle{QStringLiteral("12345"), 14, QFont::Medium, 1}));
}

TEST_F(AppDelegateTest, zeroEmptiesTheTitleAndLeavesTheImageWhereItWas)
{
    delegate->applicationDidFinishLaunching();
    delegate->updateStatusIcon(3);
    item.log.clear();
    delegate->updateStatusIcon(0);
    EXPECT_EQ(item.log, QStringList({QStringLiteral("image 18x18"), QStringLiteral("title ''")}));
}

TEST_F(AppDelegateTest, menuQuitsTheApplication)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_EQ(item.menu.size(), 1);
    EXPECT_EQ(item.menu[0].title, QStringLiteral("Quit Tidewick"));
    EXPECT_EQ(item.menu[0].keyEquivalent, QStringLiteral("q"));
    QTimer::singleShot(0, item.menu[0].action);
    QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(AppDelegateTest, leftClickTogglesThePanelAndStartsNoRefresh)
{
    delegate->applicationDidFinishLaunching();
    item.log.clear();
    item.action();
    EXPECT_EQ(item.log, QStringList(QStringLiteral("toggle")));
}

TEST_F(AppDelegateTest, panelOpensRevealsAndQuits)
{
    delegate->applicationDidFinishLaunching();
    ASSERT_NE(item.panel, nullptr);
    item.log.clear();
    item.panel->openPort(QStringLiteral("3000"));
    item.panel->openPort(QStringLiteral("99999999"));
    item.panel->revealFolder(QStringLiteral("/srv/shop"));
    EXPECT_EQ(item.log, QStringList({QStringLiteral("open http://localhost:3000"),
                                     QStringLiteral("reveal /srv/shop")}));
    QTimer::singleShot(0, item.panel, &Panel::quit);
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
