#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace tidewick
{

/// What the user can answer to a notice.
enum class UpdateAction { cancel, install, remindMeLater, restartNow, later, close };

struct UpdateButton
{
    UpdateAction action = UpdateAction::close;
    bool isEnabled = true;

    bool operator==(const UpdateButton &) const = default;
};

/// How far something is: a number from 0 to 100, or none where nobody can tell.
struct UpdateProgress
{
    std::optional<int> percentage;

    bool operator==(const UpdateProgress &) const = default;
};

/// What the user is shown of an update, all of it plain text.
struct UpdateNotice
{
    QString heading;
    QString text;
    QString details = {}; ///< behind a button of its own; empty where there are none
    std::optional<UpdateProgress> progress = {};
    QList<UpdateButton> buttons;                ///< the first is the default
    UpdateAction onClose = UpdateAction::close; ///< what Escape and the close button answer
};

/// The dialogs of the updates: one at a time, modal to nothing. Main thread only.
class UpdateDialogs
{
public:
    virtual ~UpdateDialogs() = default;

    enum class Focus { take, leave };
    /// Opens a dialog with `notice`, or shows it in the open one, which comes to the front only to
    /// take the focus.
    virtual void show(const UpdateNotice &notice, Focus focus) = 0;
    /// Shows `notice` in the open dialog; does nothing where none is open.
    virtual void change(const UpdateNotice &notice) = 0;
    virtual void close() = 0;

    /// Called with what the user answers. The dialog stays open unless it was closed.
    virtual void setAnswer(const std::function<void(UpdateAction)> &answer) = 0;
};

} // namespace tidewick
