// list_listeners SUPPLIED-TOOLS - scans once and prints a line for each development listener: port,
// process name, project, framework, category and the probe's answer, separated by tabs.

#include "scan/ProcessToolRunner.h"
#include "scan/SocketScan.h"
#include "scan/http/CurlHttpClient.h"

#include <QCoreApplication>

#include <cstdio>

using namespace tidewick;

namespace
{

QString category(const ServiceType &type)
{
    switch (type.kind()) {
    case ServiceType::Kind::database:
    case ServiceType::Kind::cache:
        return type.name();
    case ServiceType::Kind::webServer:
        return QStringLiteral("Web Server");
    case ServiceType::Kind::container:
        return QStringLiteral("Container");
    case ServiceType::Kind::unknown:
        break;
    }
    return QStringLiteral("Unknown");
}

QString answer(const PortInfo &record)
{
    if (!record.isHttpAccessible)
        return QStringLiteral("no");
    const QString version = record.metadata.value(QStringLiteral("probeResult"));
    const QString status = record.httpStatus ? QString::number(*record.httpStatus) : QString();
    return QStringLiteral("%1 %2").arg(status, version).trimmed();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: list_listeners SUPPLIED-TOOLS\n", stderr);
        return 2;
    }
    const SystemInterfaces system{std::make_shared<ProcessToolRunner>(),
                                  ToolTable::suppliedOverStock(QString::fromLocal8Bit(argv[1])),
                                  std::make_shared<CurlHttpClient>()};
    for (const PortInfo &record : fetchRunningPorts(system, {})) {
        const QStringList fields{
            QString::number(record.port()), record.command(),
            record.projectName(),           record.metadata.value(QStringLiteral("framework")),
            category(record.serviceType),   answer(record)};
        std::puts(fields.join(QLatin1Char('\t')).toUtf8().constData());
    }
}
