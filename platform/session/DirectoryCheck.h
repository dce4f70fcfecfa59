#pragma once

#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>

namespace tidewick
{

/// Asks the file system whether a path is a directory, in a child process for each question. A file
/// system that does not answer holds its asker, and no signal can end that wait: a thread would
/// keep this process from ending, but the child can be left behind. It holds none of this process's
/// descriptors. Main thread only.
class DirectoryCheck : public QObject
{
    Q_OBJECT

public:
    /// How long an answer is waited for.
    static constexpr std::chrono::milliseconds timeout{2000};
    /// How many children may be waiting, those that were left behind included.
    static constexpr qsizetype mostAtOnce = 8;

    using Answer = std::function<void(bool isDirectory)>;

    using QObject::QObject;

    /// Calls `answer` once, from the event loop, unless this object goes first: with false where
    /// there is no answer in time, no child for the question, or a question about this path that
    /// the file system has not answered yet.
    void start(const QString &path, Answer answer);

private:
    QSet<QString> m_unanswered;
};

} // namespace tidewick
