#pragma once

#include "scan/ToolRunner.h"

namespace tidewick
{

/// Runs tools as real child processes. No tool outlives the program: each is killed when its stop
/// is requested, and the kernel kills it if the program dies. The children of a tool are the tool's
/// own business. A tool that prints endlessly is killed too.
class ProcessToolRunner : public ToolRunner
{
public:
    /// The most bytes that are kept of a tool's standard output; enough for listeners on all ports.
    static constexpr qsizetype outputLimit = qsizetype{16} * 1024 * 1024;

    ToolResult run(const QString &program, const QStringList &arguments,
                   const std::stop_token &stop) const override;
};

} // namespace tidewick
