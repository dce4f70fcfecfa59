#include "model/ServiceType.h"

#include <gtest/gtest.h>

#include <QList>

using tidewick::ServiceType;

TEST(ServiceType, isUnknownByDefault)
{
    EXPECT_EQ(ServiceType(), ServiceType::unknown());
    EXPECT_EQ(ServiceType().kind(), ServiceType::Kind::unknown);
    EXPECT_TRUE(ServiceType().name().isEmpty());
}

TEST(ServiceType, equalsOnlyTheSameKindWithTheSameName)
{
    const auto mysql = ServiceType::database(QStringLiteral("MySQL"));
    EXPECT_EQ(mysql, ServiceType::database(QStringLiteral("MySQL")));
    EXPECT_NE(mysql, ServiceType::database(QStringLiteral("mysql")));
    EXPECT_NE(mysql, ServiceType::cache(QStringLiteral("MySQL")));
}

TEST(ServiceType, kindsWithoutANameEqualOnlyThemselves)
{
    const QList<ServiceType> types{ServiceType::database({}), ServiceType::cache({}),
                                   ServiceType::webServer(), ServiceType::container(),
                                   ServiceType::unknown()};
    for (qsizetype i = 0; i < types.size(); ++i) {
        for (qsizetype j = 0; j < types.size(); ++j)
            EXPECT_EQ(types[i] == types[j], i == j) << i << ' ' << j;
    }
}
