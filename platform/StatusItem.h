#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <functional>

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
};

/// The program's place in the desktop's status bar: an icon, a text beside it, a menu on a right
/// click. Main thread only.
class StatusItem
{
public:
    virtual ~StatusItem() = default;

    /// `image` may hold more pixels than `points` says; it is scaled to what the bar needs.
    virtual void setImage(const QImage &image, QSize points) = 0;
    virtual void setAttributedTitle(const StatusTitle &title) = 0;
    virtual void setImagePosition(ImagePosition position) = 0;
    virtual void setToolTip(const QString &title, const QString &text) = 0;
    virtual void setMenu(const QList<MenuItem> &items) = 0;
    /// What a left click does.
    virtual void setAction(const std::function<void()> &action) = 0;
};

} // namespace tidewick
