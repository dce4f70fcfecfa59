#include "app/ApplicationPalette.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPointer>

namespace tidewick
{
namespace
{

struct Shades
{
    QColor window;
    QColor base;
    QColor button;
    QColor text;
    QColor disabled;
    QColor link;
};

const Shades dark{0x2B2B2B, 0x1E1E1E, 0x3A3A3A, 0xF2F2F2, 0x8C8C8C, 0x6CB4F5};
const Shades light{0xF2F2F2, 0xFFFFFF, 0xE8E8E8, 0x1E1E1E, 0x8C8C8C, 0x0A5FB4};

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

QPalette paletteOf(const Shades &shades, const QPalette &desktops)
{
    QPalette palette(shades.button, shades.window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText}) {
        palette.setColor(role, shades.text);
        palette.setColor(QPalette::Disabled, role, shades.disabled);
    }
    palette.setColor(QPalette::PlaceholderText, shades.disabled);
    palette.setColor(QPalette::Base, shades.base);
    palette.setColor(QPalette::AlternateBase, shades.window);
    palette.setColor(QPalette::ToolTipBase, shades.button);
    palette.setColor(QPalette::Link, shades.link);
    palette.setColor(QPalette::LinkVisited, shades.link);
    for (const auto role : {QPalette::Highlight, QPalette::HighlightedText})
        palette.setColor(role, desktops.color(QPalette::Active, role));
    return palette;
}

void apply(ColorScheme scheme)
{
    QGuiApplication::setPalette({}); // back to the desktop's
    const QPalette desktops = QGuiApplication::palette();
    const QPalette palette = paletteFor(scheme, desktops);
    if (palette != desktops)
        QGuiApplication::setPalette(palette);
}

/// Applies the scheme again after the platform theme has changed the palette, as Plasma's does when
/// its colours change. Qt also tells of our own change, and some of that later.
class SchemeKeeper : public QObject
{
public:
    explicit SchemeKeeper(QObject &application) : QObject(&application)
    {
        application.installEventFilter(this);
    }

    void keep(ColorScheme scheme)
    {
        m_scheme = scheme;
        m_isApplying = true;
        apply(scheme);
        m_isApplying = false;
        m_applied = QGuiApplication::palette();
    }

    bool eventFilter(QObject * /*receiver*/, QEvent *event) override
    {
        const bool isChange = event->type() == QEvent::ThemeChange ||
                              event->type() == QEvent::ApplicationPaletteChange;
        if (isChange && !m_isApplying && m_scheme != ColorScheme::any &&
            QGuiApplication::palette() != m_applied)
            keep(m_scheme);
        return false;
    }

private:
    ColorScheme m_scheme = ColorScheme::any;
    QPalette m_applied;
    bool m_isApplying = false;
};

} // namespace

QPalette paletteFor(ColorScheme scheme, const QPalette &desktops)
{
    if (scheme == ColorScheme::any || isDark(desktops) == (scheme == ColorScheme::dark))
        return desktops;
    return paletteOf(scheme == ColorScheme::dark ? dark : light, desktops);
}

void followColorScheme(ColorScheme scheme)
{
    static const QPointer<SchemeKeeper> keeper = new SchemeKeeper(*qGuiApp);
    if (keeper)
        keeper->keep(scheme);
}

} // namespace tidewick
