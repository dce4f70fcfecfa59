#include "views/panel/VisualEffectView.h"
#include "views/panel/VisualEffectFill.h"

#include <gtest/gtest.h>

#include <QStringList>

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
