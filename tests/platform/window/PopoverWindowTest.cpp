#include "platform/window/PopoverWindow.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QQuickItem>
#include <QTemporaryDir>

using tidewick::PopoverWindow;

namespace
{

class PopoverWindowTest : public testing::Test
{
protected:
    PopoverWindowTest()
    {
        qputenv("QT_QUICK_BACKEND", "software");
        QFile file(m_directory.filePath(QStringLiteral("view.qml")));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write("import QtQuick\n"
                   "ListView { model: 3; delegate: Item { objectName: 'card'; height: 20 } }\n");
        window.emplace([] { return true; });
        window->setContentSize({480, 540});
        window->setContentView(QUrl::fromLocalFile(file.fileName()), {});
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
    window->makeReady();
    EXPECT_EQ(window->rootObject(), nullptr);
    EXPECT_TRUE(waitUntil([this] { return cards() >= 3; }));
    EXPECT_FALSE(window->isVisible());
}
