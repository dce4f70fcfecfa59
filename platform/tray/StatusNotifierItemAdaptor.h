#pragma once

#include "platform/tray/DBusStructure.h"

#include <QByteArray>
#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QString>

#include <functional>

namespace tidewick
{

/// `(iiay)`: width, height, and the pixels as ARGB32 in network byte order.
struct DBusPixmap
{
    int width = 0;
    int height = 0;
    QByteArray pixels;

    static DBusPixmap fromImage(const QImage &image);
    friend bool operator==(const DBusPixmap &, const DBusPixmap &) = default;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DBusPixmap &pixmap)
    {
        return writeStructure(argument, pixmap.width, pixmap.height, pixmap.pixels);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DBusPixmap &pixmap)
    {
        return readStructure(argument, pixmap.width, pixmap.height, pixmap.pixels);
    }
};

/// `(sa(iiay)ss)`: icon name, icon, title and text.
struct DBusToolTip
{
    QString iconName;
    QList<DBusPixmap> icon;
    QString title;
    QString text;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DBusToolTip &toolTip)
    {
        return writeStructure(argument, toolTip.iconName, toolTip.icon, toolTip.title,
                              toolTip.text);
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DBusToolTip &toolTip)
    {
        return readStructure(argument, toolTip.iconName, toolTip.icon, toolTip.title, toolTip.text);
    }
};

/// org.kde.StatusNotifierItem as hosts read it. Signals go out only where something changed.
class StatusNotifierItemAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
    Q_PROPERTY(QList<tidewick::DBusPixmap> IconPixmap READ icon)
    Q_PROPERTY(QString OverlayIconName READ noName CONSTANT)
    Q_PROPERTY(QList<tidewick::DBusPixmap> OverlayIconPixmap READ noIcon CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ noName CONSTANT)
    Q_PROPERTY(QList<tidewick::DBusPixmap> AttentionIconPixmap READ noIcon CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ noName CONSTANT)
    Q_PROPERTY(tidewick::DBusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    StatusNotifierItemAdaptor(QObject *parent, QDBusObjectPath menu);

    /// For a host that takes no pixels; to others the name would win over the pixels, which hold
    /// the number. To be called before the host sees the item.
    void setIconName(const QString &name, const QString &themePath);
    void setIcon(const QList<DBusPixmap> &icon);
    void setLabel(const QString &label);
    void setToolTip(const QString &title, const QString &text);
    /// What is told of a click, with the tray's coordinates, after the tray has had its answer. A
    /// click that the tray tells twice, as some do when it follows another soon, counts once.
    void setClicked(const std::function<void(QPoint)> &clicked) { m_clicked = clicked; }

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("tidewick"); }
    QString title() const { return QStringLiteral("Tidewick"); }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString noName() const { return {}; }
    QString iconName() const { return m_iconName; }
    QString iconThemePath() const { return m_iconThemePath; }
    QList<DBusPixmap> icon() const { return m_icon; }
    QList<DBusPixmap> noIcon() const { return {}; }
    DBusToolTip toolTip() const { return m_toolTip; }
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const { return m_menu; }
    QString label() const { return m_label; }

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the names are the protocol's.
    // A host that would have us draw the menu finds it at `Menu`; the wheel does nothing.
    void Activate(int x, int y) { activate(x, y); }
    void SecondaryActivate(int x, int y) { activate(x, y); }
    void ContextMenu(int, int) {}
    void Scroll(int, const QString &) {}
    /// The right to take the focus; comes before the click that needs it.
    void ProvideXdgActivationToken(const QString &token) { m_token = token.toUtf8(); }

Q_SIGNALS:
    void NewIcon();
    void NewToolTip();
    void XAyatanaNewLabel(const QString &label, const QString &guide);
    // NOLINTEND(readability-identifier-naming)

private:
    void activate(int x, int y);

    std::function<void(QPoint)> m_clicked;
    QElapsedTimer m_sinceClick;
    QByteArray m_token; // for the next click
    QDBusObjectPath m_menu;
    QString m_iconName;
    QString m_iconThemePath;
    QList<DBusPixmap> m_icon;
    QString m_label;
    DBusToolTip m_toolTip;
};

/// The same for hosts that show a label beside the icon. Others never see the properties: to some a
/// label, even an empty one, stands in place of the icon.
class LabelledItemAdaptor : public StatusNotifierItemAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ label)

public:
    using StatusNotifierItemAdaptor::StatusNotifierItemAdaptor;
};

} // namespace tidewick

Q_DECLARE_METATYPE(tidewick::DBusPixmap)
Q_DECLARE_METATYPE(tidewick::DBusToolTip)
