#include "views/card/CardFacts.h"

#include "tests/support/TestText.h"
#include "views/panel/PortListModel.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

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

struct FiguresRow
{
    const char *name;
    double megabytes;
    double percent;
    CardFacts::Level memory;
    CardFacts::Level cpu;
    const char *memoryFigure;
    const char *cpuFigure;
};

class Figures : public testing::TestWithParam<FiguresRow>
{
};

TEST_P(Figures, haveALevelAndHideWhereThereIsNothingToTell)
{
    QObject owner;
    PortInfo record = withScript(1);
    record.memoryUsage = GetParam().megabytes;
    record.cpuUsage = GetParam().percent;
    const CardFacts *const facts = factsOf(record, owner);
    EXPECT_EQ(facts->memoryLevel(), GetParam().memory);
    EXPECT_EQ(facts->cpuLevel(), GetParam().cpu);
    EXPECT_EQ(facts->memoryFigure(), QString::fromUtf8(GetParam().memoryFigure));
    EXPECT_EQ(facts->cpuFigure(), QString::fromUtf8(GetParam().cpuFigure));
}

constexpr auto normal = CardFacts::Normal;
constexpr auto raised = CardFacts::Raised;
constexpr auto high = CardFacts::High;
INSTANTIATE_TEST_SUITE_P(
    Rows, Figures,
    testing::Values(FiguresRow{"none", 0, 0, normal, normal, "", ""},
                    FiguresRow{"tooLittleCpu", 0.5, 0.1, normal, normal, "0 MB", ""},
                    FiguresRow{"littleCpu", 1, 0.2, normal, normal, "1 MB", "0% CPU"},
                    FiguresRow{"beforeRaised", 511.9, 29.9, normal, normal, "512 MB", "30% CPU"},
                    FiguresRow{"raised", 512, 30, raised, raised, "512 MB", "30% CPU"},
                    FiguresRow{"beforeHigh", 2047.9, 79.9, raised, raised, "2.0 GB", "80% CPU"},
                    FiguresRow{"high", 2048, 80, high, high, "2.0 GB", "80% CPU"}),
    rowName);

TEST(CardFacts, theSentenceTellsTheSummaryInItsOrder)
{
    QObject owner;
    PortInfo record = withScript(1);
    EXPECT_EQ(factsOf(record, owner)->sentence(), QStringLiteral("x, port 3000"));
    record.isHttpAccessible = true;
    record.metadata.insert(QStringLiteral("framework"), QStringLiteral("Vite"));
    record.memoryUsage = 121;
    record.cpuUsage = 12;
    record.startTime = QDateTime::currentDateTime().addSecs(-7290);
    EXPECT_EQ(factsOf(record, owner)->sentence(),
              QStringLiteral("x, live on port 3000, Vite, 121 MB, 12% CPU, 2h 1m"));
}

TEST(CardFacts, aNewRecordIsAnnouncedAndWhatIsNoneIsNot)
{
    CardFacts facts;
    const QSignalSpy changed(&facts, &CardFacts::recordChanged);
    facts.setRecord(QVariant::fromValue(withScript(1)));
    EXPECT_EQ(changed.count(), 1);
    facts.setRecord(QVariant(3001));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(facts.port(), QStringLiteral("3000"));
    EXPECT_EQ(facts.record().metaType(), QMetaType::fromType<PortInfo>());
}
