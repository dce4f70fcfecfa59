#pragma once

#include "views/card/WindowWatcher.h"

#include <QtQmlIntegration>

#include <chrono>
#include <optional>

namespace tidewick
{

/// The click sequences in one window. Presses belong to one sequence if each comes within the
/// desktop's double-click interval of the one before, wherever in the window; a key that stays down
/// belongs to its first press. So nobody answers what came up under the pointer a moment ago.
class PressSequence : public tidewick::WindowWatcher
{
    Q_OBJECT
    QML_ELEMENT

public:
    using WindowWatcher::WindowWatcher;

    /// To be asked once for each press that is to count: whether it is the first of its sequence.
    /// One that came from no pointer and no keyboard, but from the accessibility bus, is a press of
    /// this moment.
    Q_INVOKABLE bool begins();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Press
    {
        /// Milliseconds by the clock of the input; two events that wait are as far apart as ever.
        std::optional<quint32> timestamp;
        /// When it got here.
        std::chrono::steady_clock::time_point arrival;
    };

    void add(std::optional<quint32> timestamp);
    bool follow(const Press &before, const Press &press) const;

    std::optional<Press> m_latest;
    bool m_isFirst = true;
    /// Whether the latest press came from an input device and nobody has asked about it.
    bool m_isUnasked = false;
};

} // namespace tidewick
