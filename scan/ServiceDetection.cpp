#include "scan/ServiceDetection.h"

#include <QStringView>

#include <algorithm>
#include <array>

namespace tidewick
{
namespace
{

/// Matches if the process name contains `inCommand` and the command line one of `inFullCommand`. An
/// empty side always matches.
struct NameRule
{
    QStringView inCommand;
    std::array<QStringView, 2> inFullCommand;
    ServiceType type;
};

struct PortRule
{
    qint64 first;
    qint64 last;
    ServiceType type;
};

const ServiceType postgresql = ServiceType::database(QStringLiteral("PostgreSQL"));
const ServiceType mysql = ServiceType::database(QStringLiteral("MySQL"));
const ServiceType mongodb = ServiceType::database(QStringLiteral("MongoDB"));
const ServiceType redis = ServiceType::cache(QStringLiteral("Redis"));
const ServiceType memcached = ServiceType::cache(QStringLiteral("Memcached"));
const ServiceType container = ServiceType::container();
const ServiceType web = ServiceType::webServer();

const auto nameRules = std::to_array<NameRule>({
    {u"postgres", {}, postgresql},
    {u"mysql", {}, mysql},
    {u"mongo", {}, mongodb},
    {u"redis", {}, redis},
    {u"memcached", {}, memcached},
    {u"docker", {}, container},
    {u"node", {}, web},
    {u"deno", {}, web},
    {u"bun", {}, web},
    {u"python", {}, web},
    {{}, {u"runserver"}, web},
    {{}, {u"uvicorn"}, web},
    {u"ruby", {}, web},
    {u"puma", {}, web},
    {{}, {u"rails"}, web},
    {u"php", {}, web},
    {u"java", {u"tomcat", u"spring"}, web},
    {u"go", {u"run"}, web},
    {u"nginx", {}, web},
    {u"apache", {}, web},
    {u"httpd", {}, web},
});

const auto portRules = std::to_array<PortRule>({
    {80, 80, web},
    {443, 443, web},
    {3000, 3010, web},
    {4000, 4010, web},
    {4200, 4200, web},
    {5000, 5000, web},
    {5173, 5173, web},
    {8000, 8888, web},
    {9000, 9000, web},
    {3306, 3306, mysql},
    {5432, 5432, postgresql},
    {6379, 6379, redis},
    {11211, 11211, memcached},
    {27017, 27017, mongodb},
});

bool matches(const NameRule &rule, const QString &command, const QString &fullCommand)
{
    const auto &words = rule.inFullCommand;
    const auto isInFullCommand = [&fullCommand](QStringView word) {
        return !word.isEmpty() && fullCommand.contains(word);
    };
    return command.contains(rule.inCommand) &&
           (words[0].isEmpty() || std::any_of(words.begin(), words.end(), isInFullCommand));
}

} // namespace

ServiceType detectServiceType(qint64 port, const QString &command, const QString &fullCommand)
{
    const QString lowerCommand = command.toLower();
    const QString lowerFullCommand = fullCommand.toLower();
    for (const NameRule &rule : nameRules) {
        if (matches(rule, lowerCommand, lowerFullCommand))
            return rule.type;
    }
    for (const PortRule &rule : portRules) {
        if (port >= rule.first && port <= rule.last)
            return rule.type;
    }
    return ServiceType::unknown();
}

} // namespace tidewick
