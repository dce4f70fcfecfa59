#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// The path of a program of the system's packages, installed or unpacked by scripts/unpack-servers;
/// the empty text where it is neither.
QString findProgram(const QString &name);

/// A port that nobody listened on a moment ago, at or above `first`; any one where that is 0.
int freePort(int first = 0);

/// A server in a process of its own, which dies with the test.
class ServerProgram
{
public:
    /// Starts it in `directory` and waits until `port` takes connections on a loopback address.
    ServerProgram(const QString &program, const QStringList &arguments, const QString &directory,
                  int port);
    ~ServerProgram();
    ServerProgram(const ServerProgram &) = delete;
    ServerProgram &operator=(const ServerProgram &) = delete;

    bool isUp() const { return m_isUp; }
    /// Whether its process has not ended meanwhile.
    bool isRunning();
    /// What it had, once it has ended.
    qint64 processId() const { return m_processId; }
    /// Whatever it wrote so far, to either output.
    QByteArray output();
    /// Ends it; all that it wrote and output() has not given yet.
    QByteArray outputToItsEnd();

private:
    void end();

    QProcess m_process;
    qint64 m_processId = 0;
    bool m_isUp = false;
};

/// Runs a program to its end as a server would run: never as root. False where it fails.
bool runAsOrdinaryUser(const QString &program, const QStringList &arguments,
                       const QString &directory);

/// Hands `directory` to the user that servers run as where this test runs as root.
void giveToOrdinaryUser(const QString &directory);
