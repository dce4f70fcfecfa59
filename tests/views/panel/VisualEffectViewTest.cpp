#include "views/panel/VisualEffectView.h"
#include "views/panel/VisualEffectFill.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QStringList>

#include <utility>

using namespace tidewick;

namespace
{

/// Draws nothing: writes down what it is told.
class RecordingEffect : public NativeVisualEffect
{
public:
    explicit RecordingEffect(QStringList &log) : m_log(log) {}

    void setMaterial(Material material) override { log("material", static_cast<int>(material)); }
    void setBlendingMode(BlendingMode blending) override
    {
        log("blending", static_cast<int>(blending));
    }
    void setState(EffectState state) override { log("state", static_cast<int>(state)); }
    void setEmphasized(bool emphasized) override { log("emphasized", emphasized ? 1 : 0); }
    void setWantsLayer(bool wantsLayer) override { log("layer", wantsLayer ? 1 : 0); }

private:
    void log(const char *what, int value)
    {
        m_log.append(QStringLiteral("%1 %2").arg(QLatin1String(what)).arg(value));
    }

    QStringList &m_log;
};

class VisualEffectViewTest : public testing::Test
{
protected:
    VisualEffectView::Context context()
    {
        return [this] {
            ++made;
            return std::make_unique<RecordingEffect>(log);
        };
    }

    QStringList log;
    int made = 0;
};

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QStringLiteral("; "));
}

} // namespace

TEST_F(VisualEffectViewTest, followsTheWindowAndIsNotEmphasizedUnlessToldSo)
{
    const VisualEffectView view(Material::hudWindow, BlendingMode::withinWindow);
    EXPECT_EQ(view.state, EffectState::followsWindowActiveState);
    EXPECT_FALSE(view.emphasized);
}

TEST_F(VisualEffectViewTest, makesANativeEffectAndSetsItInOrder)
{
    const VisualEffectView view(Material::fullScreenUI, BlendingMode::behindWindow,
                                EffectState::active, true);
    EXPECT_NE(view.makeNSView(context()), nullptr);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(log, words("material 15; blending 0; state 1; emphasized 1; layer 1"));
}

TEST_F(VisualEffectViewTest, updatesTheOneThereIs)
{
    VisualEffectView view(Material::fullScreenUI, BlendingMode::behindWindow);
    const auto native = view.makeNSView(context());
    log.clear();
    view.material = Material::hudWindow;
    view.blending = BlendingMode::withinWindow;
    view.state = EffectState::inactive;
    view.updateNSView(*native);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(log, words("material 13; blending 1; state 2; emphasized 0"));
}

TEST(FilledVisualEffect, coversWhatCannotBeBlurred)
{
    FilledVisualEffect fill;
    VisualEffectView(Material::fullScreenUI, BlendingMode::behindWindow, EffectState::active, true)
        .updateNSView(fill);
    EXPECT_EQ(fill.color(Panel::Opaque, true).alpha(), 255);
    EXPECT_GT(fill.color(Panel::Translucent, true).alphaF(), 0.9);
    EXPECT_LT(fill.color(Panel::Blurred, true).alphaF(), 0.9);
    EXPECT_LT(fill.color(Panel::Blurred, false).alphaF(), 0.9) << "it is to look active always";
}

TEST(FilledVisualEffect, isFainterInAWindowThatIsNotActive)
{
    FilledVisualEffect fill;
    VisualEffectView(Material::hudWindow, BlendingMode::withinWindow).updateNSView(fill);
    EXPECT_GT(fill.color(Panel::Opaque, true).alphaF(), fill.color(Panel::Opaque, false).alphaF());
}

namespace
{

QColor fillOf(Material material, BlendingMode blending, EffectState state, bool emphasized,
              Panel::Backdrop backdrop, bool isWindowActive)
{
    FilledVisualEffect fill;
    fill.setMaterial(material);
    fill.setBlendingMode(blending);
    fill.setState(state);
    fill.setEmphasized(emphasized);
    return fill.color(backdrop, isWindowActive);
}

} // namespace

TEST(FilledVisualEffect, isALightVeilWithinTheWindowFainterWhereItIsInactive)
{
    const auto veil = [](Material material, EffectState state, bool isWindowActive) {
        const QColor color = fillOf(material, BlendingMode::withinWindow, state, false,
                                    Panel::Blurred, isWindowActive);
        EXPECT_EQ(color.rgb(), QColor(Qt::white).rgb());
        return color.alphaF();
    };
    for (const auto &[material, opacity] :
         {std::pair(Material::hudWindow, 0.1), std::pair(Material::fullScreenUI, 0.06)}) {
        EXPECT_NEAR(veil(material, EffectState::active, false), opacity, 1e-4);
        EXPECT_NEAR(veil(material, EffectState::inactive, true), 0.6 * opacity, 1e-4);
        EXPECT_NEAR(veil(material, EffectState::followsWindowActiveState, true), opacity, 1e-4);
        EXPECT_NEAR(veil(material, EffectState::followsWindowActiveState, false), 0.6 * opacity,
                    1e-4);
    }
}

TEST(FilledVisualEffect, isDarkBehindTheWindowAndOpaqueWhereItIsInactive)
{
    for (const auto &[emphasized, dark] :
         {std::pair(true, QColor(0x1E, 0x1E, 0x20)), std::pair(false, QColor(0x28, 0x28, 0x2A))}) {
        for (const auto &[backdrop, opacity] :
             {std::pair(Panel::Opaque, 1.0), std::pair(Panel::Translucent, 0.97),
              std::pair(Panel::Blurred, 0.78)}) {
            for (const auto &[state, wanted] :
                 {std::pair(EffectState::active, opacity), std::pair(EffectState::inactive, 1.0)}) {
                const QColor color = fillOf(Material::fullScreenUI, BlendingMode::behindWindow,
                                            state, emphasized, backdrop, true);
                EXPECT_EQ(color.rgb(), dark.rgb());
                EXPECT_NEAR(color.alphaF(), wanted, 1e-4);
            }
        }
    }
}
