#include "scan/ServiceDetection.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct ServiceRow
{
    const char *name;
    const char *command;
    const char *fullCommand;
    qint64 port;
    ServiceType type;
};

class Service : public testing::TestWithParam<ServiceRow>
{
};

TEST_P(Service, isDetectedByNameThenByPort)
{
    const ServiceType type =
        detectServiceType(GetParam().port, QString::fromUtf8(GetParam().command),
                          QString::fromUtf8(GetParam().fullCommand));
    EXPECT_EQ(type.kind(), GetParam().type.kind());
    EXPECT_EQ(type.name(), GetParam().type.name());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Service,
    testing::Values(
        ServiceRow{"postgresBeforeMysql", "mysql-postgres", "", 1,
                   ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"mysqlBeforeMongo", "mongo-mysql", "", 1,
                   ServiceType::database(QStringLiteral("MySQL"))},
        ServiceRow{"mongoBeforeRedis", "redis-mongo", "", 1,
                   ServiceType::database(QStringLiteral("MongoDB"))},
        ServiceRow{"redisBeforeMemcached", "memcached-redis", "", 1,
                   ServiceType::cache(QStringLiteral("Redis"))},
        ServiceRow{"memcachedBeforeDocker", "docker-memcached", "", 1,
                   ServiceType::cache(QStringLiteral("Memcached"))},
        ServiceRow{"dockerBeforeNode", "docker-node", "", 1, ServiceType::container()},
        ServiceRow{"port79Neighbour", "", "", 79, ServiceType::unknown()},
        ServiceRow{"port81Neighbour", "", "", 81, ServiceType::unknown()},
        ServiceRow{"port442Neighbour", "", "", 442, ServiceType::unknown()},
        ServiceRow{"port444Neighbour", "", "", 444, ServiceType::unknown()},
        ServiceRow{"port4199Neighbour", "", "", 4199, ServiceType::unknown()},
        ServiceRow{"port4201Neighbour", "", "", 4201, ServiceType::unknown()},
        ServiceRow{"port4999Neighbour", "", "", 4999, ServiceType::unknown()},
        ServiceRow{"port5172Neighbour", "", "", 5172, ServiceType::unknown()},
        ServiceRow{"port5174Neighbour", "", "", 5174, ServiceType::unknown()},
        ServiceRow{"port3305Neighbour", "", "", 3305, ServiceType::unknown()},
        ServiceRow{"port3307Neighbour", "", "", 3307, ServiceType::unknown()},
        ServiceRow{"port5431Neighbour", "", "", 5431, ServiceType::unknown()},
        ServiceRow{"port5433Neighbour", "", "", 5433, ServiceType::unknown()},
        ServiceRow{"port6378Neighbour", "", "", 6378, ServiceType::unknown()},
        ServiceRow{"port6380Neighbour", "", "", 6380, ServiceType::unknown()},
        ServiceRow{"port11210Neighbour", "", "", 11210, ServiceType::unknown()},
        ServiceRow{"port11212Neighbour", "", "", 11212, ServiceType::unknown()},
        ServiceRow{"port27016Neighbour", "", "", 27016, ServiceType::unknown()},
        ServiceRow{"port27018Neighbour", "", "", 27018, ServiceType::unknown()},
        ServiceRow{"postgres", "postgres", "", 1,
                   ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"postgresInside", "postgres: writer", "", 1,
                   ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"mysqld", "mysqld", "", 1, ServiceType::database(QStringLiteral("MySQL"))},
        ServiceRow{"mysqlInside", "mysql-router", "", 1,
                   ServiceType::database(QStringLiteral("MySQL"))},
        ServiceRow{"mongod", "mongod", "", 1, ServiceType::database(QStringLiteral("MongoDB"))},
        ServiceRow{"mongoInside", "mongos", "", 1,
                   ServiceType::database(QStringLiteral("MongoDB"))},
        ServiceRow{"redisServer", "redis-server", "", 1,
                   ServiceType::cache(QStringLiteral("Redis"))},
        ServiceRow{"redisInside", "redis-sentinel", "", 1,
                   ServiceType::cache(QStringLiteral("Redis"))},
        ServiceRow{"memcached", "memcached", "", 1,
                   ServiceType::cache(QStringLiteral("Memcached"))},
        ServiceRow{"docker", "docker-proxy", "", 1, ServiceType::container()},
        ServiceRow{"node", "node", "", 1, ServiceType::webServer()},
        ServiceRow{"deno", "deno", "", 1, ServiceType::webServer()},
        ServiceRow{"bun", "bun", "", 1, ServiceType::webServer()},
        ServiceRow{"python", "python3.11", "", 1, ServiceType::webServer()},
        ServiceRow{"ruby", "ruby", "", 1, ServiceType::webServer()},
        ServiceRow{"puma", "puma", "", 1, ServiceType::webServer()},
        ServiceRow{"php", "php-fpm", "", 1, ServiceType::webServer()},
        ServiceRow{"nginx", "nginx", "", 1, ServiceType::webServer()},
        ServiceRow{"apache", "apache2", "", 1, ServiceType::webServer()},
        ServiceRow{"httpd", "httpd", "", 1, ServiceType::webServer()},
        ServiceRow{"runserver", "x", "x RUNSERVER", 1, ServiceType::webServer()},
        ServiceRow{"uvicorn", "x", "uvicorn x", 1, ServiceType::webServer()},
        ServiceRow{"rails", "x", "bin/rails s", 1, ServiceType::webServer()},
        ServiceRow{"tomcat", "java", "-jar Tomcat.jar", 1, ServiceType::webServer()},
        ServiceRow{"spring", "java", "spring", 1, ServiceType::webServer()},
        ServiceRow{"javaAlone", "java", "java -jar app.jar", 1, ServiceType::unknown()},
        ServiceRow{"springNeedsJava", "x", "spring", 1, ServiceType::unknown()},
        ServiceRow{"javaOnAWebPort", "java", "java -jar app.jar", 8080, ServiceType::webServer()},
        ServiceRow{"goRun", "go", "go run .", 1, ServiceType::webServer()},
        ServiceRow{"goAlone", "go", "server", 1, ServiceType::unknown()},
        ServiceRow{"runNeedsGo", "x", "x run", 1, ServiceType::unknown()},
        ServiceRow{"cargo", "cargo", "cargo run", 1, ServiceType::webServer()},
        ServiceRow{"mongodHoldsGoToo", "mongod", "mongod --fork run", 1,
                   ServiceType::database(QStringLiteral("MongoDB"))},
        ServiceRow{"capitalPostgres", "Postgres", "", 1,
                   ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"fullUnicodeLowerCasing", "doc\u212aer", "", 1, ServiceType::container()},
        ServiceRow{"nodeOnADatabasePort", "node", "", 5432, ServiceType::webServer()},
        ServiceRow{"databaseOnAWebPort", "postgres", "", 3000,
                   ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"dockerOnACachePort", "com.docker.backend", "", 6379, ServiceType::container()},
        ServiceRow{"postgresInTheCommandLineOnly", "x", "postgres", 1, ServiceType::unknown()},
        ServiceRow{"port80", "", "", 80, ServiceType::webServer()},
        ServiceRow{"port443", "", "", 443, ServiceType::webServer()},
        ServiceRow{"port2999", "", "", 2999, ServiceType::unknown()},
        ServiceRow{"port3000", "", "", 3000, ServiceType::webServer()},
        ServiceRow{"port3010", "", "", 3010, ServiceType::webServer()},
        ServiceRow{"port3011", "", "", 3011, ServiceType::unknown()},
        ServiceRow{"port3999", "", "", 3999, ServiceType::unknown()},
        ServiceRow{"port4000", "", "", 4000, ServiceType::webServer()},
        ServiceRow{"port4010", "", "", 4010, ServiceType::webServer()},
        ServiceRow{"port4011", "", "", 4011, ServiceType::unknown()},
        ServiceRow{"port4200", "", "", 4200, ServiceType::webServer()},
        ServiceRow{"port5000", "", "", 5000, ServiceType::webServer()},
        ServiceRow{"port5001", "", "", 5001, ServiceType::unknown()},
        ServiceRow{"port5173", "", "", 5173, ServiceType::webServer()},
        ServiceRow{"port7999", "", "", 7999, ServiceType::unknown()},
        ServiceRow{"port8000", "", "", 8000, ServiceType::webServer()},
        ServiceRow{"port8888", "", "", 8888, ServiceType::webServer()},
        ServiceRow{"port8889", "", "", 8889, ServiceType::unknown()},
        ServiceRow{"port8999", "", "", 8999, ServiceType::unknown()},
        ServiceRow{"port9000", "", "", 9000, ServiceType::webServer()},
        ServiceRow{"port9001", "", "", 9001, ServiceType::unknown()},
        ServiceRow{"port3306", "", "", 3306, ServiceType::database(QStringLiteral("MySQL"))},
        ServiceRow{"port5432", "", "", 5432, ServiceType::database(QStringLiteral("PostgreSQL"))},
        ServiceRow{"port6379", "", "", 6379, ServiceType::cache(QStringLiteral("Redis"))},
        ServiceRow{"port11211", "", "", 11211, ServiceType::cache(QStringLiteral("Memcached"))},
        ServiceRow{"port27017", "", "", 27017, ServiceType::database(QStringLiteral("MongoDB"))},
        ServiceRow{"port0", "", "", 0, ServiceType::unknown()},
        ServiceRow{"portMinus80", "", "", -80, ServiceType::unknown()}),
    rowName);
