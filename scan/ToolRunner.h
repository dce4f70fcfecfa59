#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <stdexcept>
#include <stop_token>
#include <utility>

namespace tidewick
{

/// A tool that could not be started; `description` holds the system's own text.
class ToolStartError : public std::runtime_error
{
public:
    explicit ToolStartError(QString description)
        : std::runtime_error(description.toStdString()), m_description(std::move(description))
    {
    }
    const QString &description() const { return m_description; }

private:
    QString m_description;
};

/// Prints one line to standard output: `prefix`, then the error's description.
void printError(const char *prefix, const std::exception &error);

/// What a tool left behind when it ended. `exitStatus` is -1 where a signal ended it. `isTruncated`
/// tells that the tool printed more than is kept.
struct ToolResult
{
    QByteArray standardOutput;
    int exitStatus = 0;
    bool isTruncated = false;
};

/// The edge to the operating system's command-line tools.
class ToolRunner
{
public:
    virtual ~ToolRunner() = default;

    /// Starts `program` (an absolute path) with exactly `arguments`, never through a shell, waits
    /// for its exit, and returns its standard output, truncated only far beyond what any tool
    /// prints. Blocks the calling thread without a timeout; callable from several threads at once.
    /// A stop request, before or during the run, kills the child at once and makes the result
    /// useless. Throws ToolStartError.
    virtual ToolResult run(const QString &program, const QStringList &arguments,
                           const std::stop_token &stop) const = 0;
};

} // namespace tidewick
