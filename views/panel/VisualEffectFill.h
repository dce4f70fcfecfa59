#pragma once

#include "views/panel/Panel.h"
#include "views/panel/VisualEffectView.h"

#include <QColor>
#include <QObject>
#include <QQmlParserStatus>
#include <QtQmlIntegration>

#include <memory>

namespace tidewick
{

/// A dark fill in place of a native effect. Behind the window it lets through as much as what is
/// there can bear; within the window it is a light veil, fainter where it looks inactive.
class FilledVisualEffect : public NativeVisualEffect
{
public:
    void setMaterial(Material material) override { m_material = material; }
    void setBlendingMode(BlendingMode blending) override { m_blending = blending; }
    void setState(EffectState state) override { m_state = state; }
    void setEmphasized(bool emphasized) override { m_emphasized = emphasized; }
    /// A fill is never a layer of its own.
    void setWantsLayer(bool /*wantsLayer*/) override {}

    QColor color(Panel::Backdrop backdrop, bool isWindowActive) const;

private:
    Material m_material = Material::fullScreenUI;
    BlendingMode m_blending = BlendingMode::behindWindow;
    EffectState m_state = EffectState::followsWindowActiveState;
    bool m_emphasized = false;
};

/// Keeps one such effect for a view, made when the view is complete and updated in place.
class VisualEffectFill : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    /// Raw values, as in VisualEffectView.
    Q_PROPERTY(int material MEMBER m_material NOTIFY changed REQUIRED)
    Q_PROPERTY(int blending MEMBER m_blending NOTIFY changed REQUIRED)
    Q_PROPERTY(int state MEMBER m_state NOTIFY changed REQUIRED)
    Q_PROPERTY(bool emphasized MEMBER m_emphasized NOTIFY changed REQUIRED)
    Q_PROPERTY(tidewick::Panel::Backdrop backdrop MEMBER m_backdrop NOTIFY changed)
    Q_PROPERTY(bool isWindowActive MEMBER m_isWindowActive NOTIFY changed)
    Q_PROPERTY(QColor color READ color NOTIFY colorChanged)

public:
    explicit VisualEffectFill(QObject *parent = nullptr);

    void classBegin() override {}
    void componentComplete() override;
    QColor color() const;

Q_SIGNALS:
    void changed();
    void colorChanged();

private:
    VisualEffectView view() const;
    void update();

    int m_material = 0;
    int m_blending = 0;
    int m_state = 0;
    bool m_emphasized = false;
    Panel::Backdrop m_backdrop = Panel::Opaque;
    bool m_isWindowActive = true;
    FilledVisualEffect *m_fill = nullptr; // the same as m_native
    std::unique_ptr<NativeVisualEffect> m_native;
};

} // namespace tidewick
