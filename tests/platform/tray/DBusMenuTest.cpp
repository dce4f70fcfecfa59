#include "platform/tray/DBusMenu.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

class DBusMenuTest : public testing::Test
{
protected:
    DBusMenuTest()
    {
        menu->setItems({{QStringLiteral("Settings_1"), QStringLiteral(","),
                         [this] {
                             chosen = 1;
                         }},
                        {},
                        {QStringLiteral("Quit"), {}, [this] {
                             chosen = 3;
                         }}});
    }

    DBusMenuLayout layout(int parent, int depth, const QStringList &names = {})
    {
        DBusMenuLayout result;
        menu->GetLayout(parent, depth, names, result);
        return result;
    }
    static DBusMenuLayout child(const DBusMenuLayout &layout, qsizetype index)
    {
        return layout.children.at(index).value<DBusMenuLayout>();
    }
    void click(int id) { menu->Event(id, QStringLiteral("clicked"), {}, 0); }

    int chosen = 0;
    DBusObject object;
    DBusMenu *menu = new DBusMenu(&object);
};

const QString label = QStringLiteral("label");

} // namespace

TEST_F(DBusMenuTest, laysOutItsEntriesBelowTheRoot)
{
    const DBusMenuLayout root = layout(0, -1);
    EXPECT_EQ(root.id, 0);
    EXPECT_EQ(root.properties.value(QStringLiteral("children-display")), QStringLiteral("submenu"));
    ASSERT_EQ(root.children.size(), 3);
    EXPECT_EQ(child(root, 1).id, 2);
    EXPECT_EQ(child(root, 1).properties.value(QStringLiteral("type")), QStringLiteral("separator"));
    EXPECT_EQ(child(root, 2).properties.value(label), QStringLiteral("Quit"));
}

TEST_F(DBusMenuTest, underscoresAreNotAccessKeys)
{
    EXPECT_EQ(menu->GetProperty(1, label).variant(), QStringLiteral("Settings__1"));
}

TEST_F(DBusMenuTest, keyEquivalentIsPressedWithControl)
{
    const auto keys = [this] {
        return menu->GetProperty(1, QStringLiteral("shortcut"))
            .variant()
            .value<QList<QStringList>>();
    };
    const QString control = QStringLiteral("Control");
    EXPECT_EQ(keys(), QList<QStringList>({{control, QStringLiteral("comma")}}));
    menu->setKeyNames(KeyNames::qt);
    EXPECT_EQ(keys(), QList<QStringList>({{control, QStringLiteral(",")}}));
    EXPECT_FALSE(layout(3, 0).properties.contains(QStringLiteral("shortcut")));
}

TEST_F(DBusMenuTest, givesOnlyTheDepthAndThePropertiesAskedFor)
{
    EXPECT_TRUE(layout(0, 0).children.isEmpty());
    EXPECT_EQ(child(layout(0, 1, {label}), 0).properties.keys(), QStringList({label}));
    EXPECT_TRUE(child(layout(0, 1, {label}), 1).properties.isEmpty());
}

TEST_F(DBusMenuTest, groupPropertiesLeaveUnknownEntriesOut)
{
    const auto entries = menu->GetGroupProperties({3, 99, -1}, {label});
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].id, 3);
    EXPECT_EQ(entries[0].properties.value(label), QStringLiteral("Quit"));
}

TEST_F(DBusMenuTest, unknownEntriesAndPropertiesAreEmpty)
{
    EXPECT_EQ(menu->GetProperty(99, label).variant(), QString());
    EXPECT_EQ(menu->GetProperty(1, QStringLiteral("nonsense")).variant(), QString());
    EXPECT_TRUE(layout(99, -1).children.isEmpty());
    EXPECT_TRUE(layout(-1, -1).children.isEmpty());
}

TEST_F(DBusMenuTest, clickRunsTheActionAfterTheAnswer)
{
    click(3);
    EXPECT_EQ(chosen, 0);
    EXPECT_TRUE(waitUntil([this] { return chosen == 3; }));
}

TEST_F(DBusMenuTest, otherEventsAndOtherEntriesDoNothing)
{
    menu->Event(3, QStringLiteral("hovered"), {}, 0);
    for (const int id : {0, 2, 4, -1})
        click(id);
    EXPECT_FALSE(waitUntil([this] { return chosen != 0; }, 50));
}

TEST_F(DBusMenuTest, eventGroupTellsWhichEntriesItDoesNotKnow)
{
    const QString clicked = QStringLiteral("clicked");
    EXPECT_EQ(menu->EventGroup({{9, clicked, {}, 0}, {1, clicked, {}, 0}}), QList<int>({9}));
    EXPECT_TRUE(waitUntil([this] { return chosen == 1; }));
}

TEST_F(DBusMenuTest, disabledEntryCannotBeChosen)
{
    menu->setItems({{QStringLiteral("Check"), {}, [this] { chosen = 1; }, false}});
    EXPECT_EQ(menu->GetProperty(1, QStringLiteral("enabled")).variant(), false);
    click(1);
    EXPECT_FALSE(waitUntil([this] { return chosen != 0; }, 50));
}

TEST_F(DBusMenuTest, isMadeAnewWhenATrayIsAboutToShowIt)
{
    QString title = QStringLiteral("One");
    menu->setWanted([&] { menu->setItems({{title, {}, {}}}); });
    EXPECT_TRUE(menu->AboutToShow(0));
    EXPECT_FALSE(menu->AboutToShow(0));
    title = QStringLiteral("Two");
    QList<int> unknown;
    EXPECT_EQ(menu->AboutToShowGroup({0, 1, 9}, unknown), QList<int>({0}));
    EXPECT_EQ(unknown, QList<int>({9}));
    EXPECT_EQ(menu->GetProperty(1, label).variant(), title);
}

TEST_F(DBusMenuTest, isMadeAnewOnlyAsAWhole)
{
    EXPECT_FALSE(menu->AboutToShow(0)) << "nobody makes it";
    int made = 0;
    menu->setWanted([&made] { ++made; });
    EXPECT_FALSE(menu->AboutToShow(1));
    EXPECT_EQ(made, 0);
    menu->AboutToShow(0);
    EXPECT_EQ(made, 1);
}

TEST_F(DBusMenuTest, isMadeForATrayThatReadsItBeforeItsFirstShow)
{
    menu->setItems({});
    menu->setWanted([&] { menu->setItems({{QStringLiteral("Quit"), {}, {}}}); });
    EXPECT_EQ(layout(0, -1).children.size(), 1);
}

TEST_F(DBusMenuTest, sameLookIsNoNewLayout)
{
    menu->setItems({{QStringLiteral("Quit"), {}, {}}});
    DBusMenuLayout unused;
    const uint before = menu->GetLayout(0, 0, {}, unused);
    menu->setItems({{QStringLiteral("Quit"), {}, [this] {
                         chosen = 1;
                     }}});
    EXPECT_EQ(menu->GetLayout(0, 0, {}, unused), before);
    click(1);
    EXPECT_TRUE(waitUntil([this] { return chosen == 1; }));
}

TEST_F(DBusMenuTest, newItemsAreANewRevision)
{
    DBusMenuLayout unused;
    const uint before = menu->GetLayout(0, 0, {}, unused);
    uint announced = 0;
    QObject::connect(menu, &DBusMenu::LayoutUpdated, &object,
                     [&](uint revision, int parent) { announced = parent == 0 ? revision : 0; });
    menu->setItems({});
    EXPECT_EQ(menu->GetLayout(0, -1, {}, unused), before + 1);
    EXPECT_EQ(announced, before + 1);
    EXPECT_TRUE(unused.children.isEmpty());
}
