#include "views/controls/TabularText.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QImage>

#include <cmath>

using namespace tidewick;

namespace
{

class DrawnText : public TabularText
{
public:
    explicit DrawnText(const QString &text = {})
    {
        setProperty("font", font);
        setProperty("text", text);
    }

    /// As wide as it is.
    QImage picture() const { return image(QSizeF(width(), implicitHeight()).toSize(), 1); }

    const QFont font{QStringLiteral("Inter"), 20};
};

} // namespace

TEST(TabularText, hasAHeightAndABaselineAndNoWidthWithoutText)
{
    const DrawnText text;
    const QFontMetricsF metrics(text.font);
    EXPECT_EQ(text.implicitWidth(), 0);
    EXPECT_EQ(text.implicitHeight(), std::ceil(metrics.height()));
    EXPECT_NEAR(DrawnText(QStringLiteral("x")).baselineOffset(), metrics.ascent(), 1);
    EXPECT_FALSE(TabularText().isTruncated());
    EXPECT_GT(TabularText().implicitHeight(), 0);
}

TEST(TabularText, digitsAreAllAsWide)
{
    for (char digit = '0'; digit <= '9'; ++digit)
        EXPECT_EQ(DrawnText(QString(8, QLatin1Char(digit))).implicitWidth(),
                  DrawnText(QStringLiteral("00000000")).implicitWidth())
            << digit;
}

TEST(TabularText, thatIsTooLongEndsWithAnEllipsis)
{
    const auto whole = QStringLiteral("Spring Boot");
    DrawnText text(whole);
    const qreal narrow = text.implicitWidth() - 30;
    text.setWidth(narrow);
    EXPECT_TRUE(text.isTruncated());
    const QFontMetricsF metrics(text.font);
    DrawnText elided(metrics.elidedText(whole, Qt::ElideRight, narrow));
    ASSERT_LE(elided.implicitWidth(), narrow);
    elided.setWidth(narrow);
    EXPECT_EQ(text.picture(), elided.picture());

    DrawnText other(whole);
    other.setWidth(other.implicitWidth());
    text.setWidth(other.implicitWidth());
    EXPECT_FALSE(text.isTruncated());
    EXPECT_EQ(text.picture(), other.picture());
}

TEST(TabularText, tellsOnceThatItIsTooLong)
{
    DrawnText text(QStringLiteral("Spring Boot"));
    int changes = 0;
    QObject::connect(&text, &TabularText::truncatedChanged, &text, [&changes] { ++changes; });
    const qreal whole = text.implicitWidth();
    for (const qreal width : {whole, whole - 30, whole - 40, whole, whole + 10})
        text.setWidth(width);
    EXPECT_EQ(changes, 2);
}
