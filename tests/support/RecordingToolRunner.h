#pragma once

#include "scan/ToolRunner.h"

#include <functional>
#include <mutex>
#include <vector>

/// Starts nothing: writes down each call and answers with `answer`, in the caller's thread.
class RecordingToolRunner : public tidewick::ToolRunner
{
public:
    struct Call
    {
        QString program;
        QStringList arguments;
    };
    using Answer = std::function<tidewick::ToolResult(const Call &, const std::stop_token &)>;

    explicit RecordingToolRunner(Answer answer) : m_answer(std::move(answer)) {}

    tidewick::ToolResult run(const QString &program, const QStringList &arguments,
                             const std::stop_token &stop) const override;

    std::vector<Call> calls() const;

private:
    Answer m_answer;
    mutable std::mutex m_mutex;
    mutable std::vector<Call> m_calls;
};
