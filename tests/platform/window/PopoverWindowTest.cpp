#include "platform/window/PopoverWindow.h"
#include "platform/window/DesktopWindow.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QQuickItem>
#include <QTemporaryDir>

using tidewick::DesktopWindow;
using tidewick::PopoverWindow;

namespace
{

class PopoverWindowTest : public testing::Test
{
protected:
    PopoverWindowTest()
    {
        qputenv("QT_QUICK_BACKEND", "software");
        write("import QtQuick\n"
              "ListView { model: 3; delegate: Item { objectName: 'card'; height: 20 } }\n");
        window.emplace([] { return true; });
        window->setContentSize({480, 540});
        window->setContentView(QUrl::fromLocalFile(m_view), {});
    }

    /// The view's file from now on.
    void write(const char *text) const
    {
        QFile file(m_view);
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(text);
    }

    /// How many cards there are; -1 before the content is loaded.
    qsizetype cards() const
    {
        const QQuickItem *const list = window->rootObject();
        if (list == nullptr)
            return -1;
        return list->property("contentItem").value<QQuickItem *>()->childItems().size();
    }

    std::optional<PopoverWindow> window;

private:
    QTemporaryDir m_directory;
    const QString m_view = m_directory.filePath(QStringLiteral("view.qml"));
};

} // namespace

TEST_F(PopoverWindowTest, loadsItsContentWhenItIsShown)
{
    QCoreApplication::processEvents();
    EXPECT_EQ(window->rootObject(), nullptr);
    window->show({});
    EXPECT_NE(window->rootObject(), nullptr);
}

TEST_F(PopoverWindowTest, isMadeReadyUnseenAndNotAtOnce)
{
    QElapsedTimer timer;
    timer.start();
    window->makeReady();
    EXPECT_EQ(window->rootObject(), nullptr);
    EXPECT_TRUE(waitUntil([this] { return cards() >= 3; }));
    EXPECT_GE(timer.elapsed(), 250); // a timer may be early by a twentieth
    EXPECT_FALSE(window->isVisible());
}

TEST_F(PopoverWindowTest, contentThatCouldNotBeLoadedIsLoadedAtTheNextOpening)
{
    write("import QtQuick\nItem { MissingType {} }\n");
    window->makeReady();
    EXPECT_TRUE(waitUntil([this] { return window->status() == QQuickView::Error; }));
    write("import QtQuick\nListView { objectName: 'mended' }\n");
    window->show({});
    ASSERT_NE(window->rootObject(), nullptr);
    EXPECT_EQ(window->rootObject()->objectName(), QStringLiteral("mended"));
}

TEST_F(PopoverWindowTest, contentIsLoadedOnce)
{
    window->show({});
    const QQuickItem *const first = window->rootObject();
    window->performClose();
    window->show({});
    EXPECT_EQ(window->rootObject(), first);
}

TEST(DesktopWindow, loadsItsContentAgainWhereThatFailed)
{
    const QTemporaryDir directory;
    const QString view = directory.filePath(QStringLiteral("view.qml"));
    DesktopWindow window;
    window.setContentView(QUrl::fromLocalFile(view),
                          {{QStringLiteral("objectName"), QStringLiteral("set")}});
    EXPECT_EQ(window.rootObject(), nullptr);
    QFile file(view);
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("import QtQuick\nItem {}\n");
    file.close();
    window.makeKeyAndOrderFront();
    ASSERT_NE(window.rootObject(), nullptr);
    EXPECT_EQ(window.rootObject()->objectName(), QStringLiteral("set"));
}
