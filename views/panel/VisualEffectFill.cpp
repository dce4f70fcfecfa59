#include "views/panel/VisualEffectFill.h"

namespace tidewick
{
namespace
{

/// How much of the dark covers what is behind the window. Unblurred, it must stay readable.
double cover(Panel::Backdrop backdrop)
{
    switch (backdrop) {
    case Panel::Blurred:
        return 0.78;
    case Panel::Translucent:
        return 0.97;
    case Panel::Opaque:
        break;
    }
    return 1;
}

QColor shade(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

} // namespace

QColor FilledVisualEffect::color(Panel::Backdrop backdrop, bool isWindowActive) const
{
    const bool looksActive = m_state == EffectState::active ||
                             (m_state == EffectState::followsWindowActiveState && isWindowActive);
    if (m_blending == BlendingMode::withinWindow)
        return shade(Qt::white,
                     (m_material == Material::hudWindow ? 0.1 : 0.06) * (looksActive ? 1 : 0.6));
    return shade(m_emphasized ? QColor(0x1E, 0x1E, 0x20) : QColor(0x28, 0x28, 0x2A),
                 looksActive ? cover(backdrop) : 1);
}

VisualEffectFill::VisualEffectFill(QObject *parent) : QObject(parent)
{
    connect(this, &VisualEffectFill::changed, this, &VisualEffectFill::update);
}

void VisualEffectFill::componentComplete()
{
    m_native = view().makeNSView([this] {
        auto fill = std::make_unique<FilledVisualEffect>();
        m_fill = fill.get();
        return fill;
    });
    Q_EMIT colorChanged();
}

QColor VisualEffectFill::color() const
{
    return m_fill == nullptr ? QColor() : m_fill->color(m_backdrop, m_isWindowActive);
}

VisualEffectView VisualEffectFill::view() const
{
    return {static_cast<Material>(m_material), static_cast<BlendingMode>(m_blending),
            static_cast<EffectState>(m_state), m_emphasized};
}

void VisualEffectFill::update()
{
    if (!m_native)
        return;
    view().updateNSView(*m_native);
    Q_EMIT colorChanged();
}

} // namespace tidewick
