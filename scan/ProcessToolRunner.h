#pragma once

#include "scan/ToolRunner.h"

namespace tidewick
{

/// Runs tools as real child processes. No tool outlives the program: each is killed when its stop
/// is requested, and by the kernel should the program die without a word. What a tool itself
/// started is the tool's to end.
class ProcessToolRunner : public ToolRunner
{
public:
    ToolResult run(const QString &program, const QStringList &arguments,
                   const std::stop_token &stop) const override;
};

} // namespace tidewick
