#include "views/card/CardFacts.h"

#include "views/panel/PortListModel.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

CardFacts *factsOf(const PortInfo &record, QObject &owner)
{
    auto *const facts = new CardFacts(&owner);
    facts->setRecord(QVariant::fromValue(record));
    return facts;
}

PortInfo withScript(qsizetype length)
{
    PortInfo record(3000, QStringLiteral("1"), QStringLiteral("node"), QStringLiteral("a"),
                    QStringLiteral("localhost"));
    record.metadata.insert(QStringLiteral("script"), QString(length, u'x'));
    return record;
}

} // namespace

TEST(CardFacts, aNameAsLongAsAFilesIsShownWhole)
{
    QObject owner;
    const CardFacts *const facts = factsOf(withScript(255), owner);
    EXPECT_EQ(facts->title(), QString(255, u'x'));
    EXPECT_EQ(facts->script(), QString(255, u'x'));
}

TEST(CardFacts, aLongerNameIsTruncated)
{
    QObject owner;
    const CardFacts *const facts = factsOf(withScript(130'000), owner);
    const QString truncated = QString(255, u'x') + QStringLiteral("…");
    EXPECT_EQ(facts->title(), truncated);
    EXPECT_EQ(facts->script(), truncated);
    EXPECT_LT(facts->sentence().size(), 300);
}

TEST(CardFacts, noNameTurnsOrHidesWhatStandsBesideIt)
{
    QObject owner;
    PortInfo record = withScript(1);
    record.workingDirectory = QStringLiteral("/a/\u202Eevil\u2066\u200Bname\u00AD");
    record.metadata.insert(QStringLiteral("script"), QStringLiteral("a\u2028b\u0007c.js"));
    const CardFacts *const facts = factsOf(record, owner);
    EXPECT_EQ(facts->title(), QStringLiteral("evil  name"));
    EXPECT_EQ(facts->directoryName(), QStringLiteral("evil  name"));
    EXPECT_EQ(facts->script(), QStringLiteral("a b c.js"));
    EXPECT_TRUE(facts->sentence().startsWith(QStringLiteral("evil  name, port 3000")));
    EXPECT_EQ(facts->workingDirectory(), record.workingDirectory);
}

TEST(CardFacts, aNameThatCannotBeSeenIsNone)
{
    QObject owner;
    PortInfo record = withScript(0);
    record.workingDirectory = QStringLiteral("/a/\u200B");
    EXPECT_EQ(factsOf(record, owner)->title(), QStringLiteral("Local Server"));
}

TEST(CardFacts, theDirectoryToRevealIsNeverTruncated)
{
    QObject owner;
    PortInfo record = withScript(1);
    record.workingDirectory = u'/' + QString(255, u'd').repeated(3) + u'/' + QString(255, u'e');
    const CardFacts *const facts = factsOf(record, owner);
    EXPECT_EQ(facts->workingDirectory(), record.workingDirectory);
    EXPECT_EQ(facts->directoryName(), QString(255, u'e'));
}
