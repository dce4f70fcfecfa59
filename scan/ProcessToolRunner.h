#pragma once

#include "scan/ToolRunner.h"

namespace tidewick
{

/// Runs tools as real child processes. No tool outlives the program: each is killed when its stop
/// is requested, and by the kernel should the program die without a word. What a tool itself
/// started is the tool's to end. A tool that prints without an end is killed, too.
class ProcessToolRunner : public ToolRunner
{
public:
    /// Bytes that are kept of a tool's standard output: listeners on all ports there are.
    static constexpr qsizetype outputLimit = qsizetype{16} * 1024 * 1024;

    ToolResult run(const QString &program, const QStringList &arguments,
                   const std::stop_token &stop) const override;
};

} // namespace tidewick
