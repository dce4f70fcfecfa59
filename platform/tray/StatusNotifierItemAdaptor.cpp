#include "platform/tray/StatusNotifierItemAdaptor.h"

#include "platform/session/ActivationToken.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <utility>

namespace tidewick
{
namespace
{

/// Sooner than this nobody clicks again.
constexpr qint64 repetitionMs = 30;

void registerTypes()
{
    qDBusRegisterMetaType<DBusPixmap>();
    qDBusRegisterMetaType<QList<DBusPixmap>>();
    qDBusRegisterMetaType<DBusToolTip>();
}

} // namespace

DBusPixmap DBusPixmap::fromImage(const QImage &image)
{
    const QImage source = image.convertToFormat(QImage::Format_ARGB32);
    QByteArray pixels(source.sizeInBytes(), Qt::Uninitialized);
    // 32-bit rows carry no padding, so the picture is one run of pixels.
    qToBigEndian<quint32>(source.constBits(), source.sizeInBytes() / 4, pixels.data());
    return {source.width(), source.height(), std::move(pixels)};
}

StatusNotifierItemAdaptor::StatusNotifierItemAdaptor(QObject *parent, QDBusObjectPath menu)
    : QDBusAbstractAdaptor(parent), m_menu(std::move(menu))
{
    static const bool registered = (registerTypes(), true);
    Q_UNUSED(registered)
}

void StatusNotifierItemAdaptor::setIconName(const QString &name, const QString &themePath)
{
    m_iconName = name;
    m_iconThemePath = themePath;
}

void StatusNotifierItemAdaptor::setIcon(const QList<DBusPixmap> &icon)
{
    if (m_icon == icon)
        return;
    m_icon = icon;
    Q_EMIT NewIcon();
}

void StatusNotifierItemAdaptor::setLabel(const QString &label)
{
    if (m_label == label)
        return;
    m_label = label;
    Q_EMIT XAyatanaNewLabel(label, label);
}

void StatusNotifierItemAdaptor::activate(int x, int y)
{
    const bool isRepeated = m_sinceClick.isValid() && !m_sinceClick.hasExpired(repetitionMs);
    m_sinceClick.start();
    const auto answer = [this, x, y, isRepeated, token = std::exchange(m_token, {})] {
        const ActivationToken proof(token);
        if (m_clicked && !isRepeated)
            m_clicked({x, y});
    };
    QMetaObject::invokeMethod(this, answer, Qt::QueuedConnection);
}

void StatusNotifierItemAdaptor::setToolTip(const QString &title, const QString &text)
{
    if (m_toolTip.title == title && m_toolTip.text == text)
        return;
    m_toolTip = {{}, {}, title, text};
    Q_EMIT NewToolTip();
}

} // namespace tidewick
