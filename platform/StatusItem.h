#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QSize>
#include <QString>

#include <functional>
#include <optional>

namespace tidewick
{

/// The colour of the icon and its number, legible on light and on dark bars: its contrast is at
/// least 3.9 against white and #1e1e1e.
inline constexpr QColor statusInk(0x1f, 0x8a, 0x9e);

/// The text beside the icon: digits of equal width, sizes in points, the baseline raised by
/// `baselineOffset` points. An empty text shows no title.
struct StatusTitle
{
    QString text;
    int pointSize = 14;
    QFont::Weight weight = QFont::Medium;
    int baselineOffset = 1;

    friend bool operator==(const StatusTitle &, const StatusTitle &) = default;
};

/// Where a status item puts its image.
enum class ImagePosition { leading };

/// One entry of the item's menu; without a title it is a separator. `keyEquivalent` is a lower-case
/// character pressed with the desktop's own modifier, or empty.
struct MenuItem
{
    QString title;
    QString keyEquivalent;
    std::function<void()> action;
    bool isEnabled = true;
};

/// What the user did to the item.
enum class ClickType { leftMouseUp, rightMouseUp };

/// A click and its position, if the tray reports one. Trays report different positions: in the
/// desktop's coordinates, counted in points or in the screen's pixels, in those of the bar, or
/// useless ones.
struct ClickEvent
{
    ClickType type = ClickType::leftMouseUp;
    std::optional<QPoint> position;
    bool isInPixels = false;
    /// The pointer is on the item's menu and not on the item.
    bool isInMenu = false;
};

/// The program's place in the desktop's status bar: an icon, a text beside it, and one action for
/// every click. To open a menu, the action attaches it and calls performClick(). Main thread only.
class StatusItem
{
public:
    virtual ~StatusItem() = default;

    /// `image` may hold more pixels than `points` says; it is scaled to what the bar needs.
    virtual void setImage(const QImage &image, QSize points) = 0;
    virtual void setAttributedTitle(const StatusTitle &title) = 0;
    virtual void setImagePosition(ImagePosition position) = 0;
    virtual void setToolTip(const QString &title, const QString &text) = 0;
    /// Sets what a click does. The action asks `currentEvent` for the kind of click.
    virtual void setAction(const std::function<void()> &action) = 0;
    /// The click that called the action; nothing outside the action.
    virtual std::optional<ClickEvent> currentEvent() const = 0;
    /// Attaches the menu that `performClick` opens; an empty one detaches.
    virtual void setMenu(const QList<MenuItem> &items) = 0;
    virtual void performClick() = 0;
};

} // namespace tidewick
