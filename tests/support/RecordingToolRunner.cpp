#include "tests/support/RecordingToolRunner.h"

tidewick::ToolResult RecordingToolRunner::run(const QString &program, const QStringList &arguments,
                                              const std::stop_token &stop) const
{
    const Call call{program, arguments};
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
    }
    return m_answer(call, stop);
}

std::vector<RecordingToolRunner::Call> RecordingToolRunner::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}
