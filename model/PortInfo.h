#pragma once

#include "model/ServiceType.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QUuid>

#include <optional>

namespace tidewick
{

/// One TCP port on which a local process listens, with everything known about that process.
///
/// A plain value. The scan builds it with the six identity fields, which never change; enrichment
/// returns copies with the others filled in. It has no equality on purpose: rows are matched by
/// `id`, which is new in every scan, or by the text of `pid`.
class PortInfo
{
public:
    PortInfo(qint64 port, QString pid, QString command, QString user, QString address);

    const QUuid &id() const { return m_id; }
    qint64 port() const { return m_port; }
    /// The process id as text, exactly as the socket list printed it.
    const QString &pid() const { return m_pid; }
    /// The short process name of the socket list.
    const QString &command() const { return m_command; }
    const QString &user() const { return m_user; }
    const QString &address() const { return m_address; }

    /// What a person would call the project: the last component of the working directory (of its
    /// parent, once, where it is src, dist, build or server), else the script's name without its
    /// extension, else "Node App".
    QString projectName() const;

    /// The whole command line, trimmed.
    QString fullCommand;
    /// Absolute path; empty when unknown.
    QString workingDirectory;
    ServiceType serviceType;
    /// Keys in use: "framework", "script", "container", "probeResult".
    QMap<QString, QString> metadata;
    /// Whether the HTTP probe got an answer, and that answer's status code.
    bool isHttpAccessible = false;
    std::optional<qint64> httpStatus;
    /// Always false in a published record; it exists for views that show a running probe.
    bool isCheckingHttp = false;
    /// Resident memory in megabytes (kilobytes divided by 1024).
    double memoryUsage = 0;
    /// Percent of one processor, as ps prints it.
    double cpuUsage = 0;
    std::optional<QDateTime> startTime;

private:
    QUuid m_id = QUuid::createUuid();
    qint64 m_port;
    QString m_pid;
    QString m_command;
    QString m_user;
    QString m_address;
};

/// How many of `records` answer HTTP.
qsizetype liveCount(const QList<PortInfo> &records);

} // namespace tidewick
