#pragma once

#include <functional>
#include <memory>

namespace tidewick
{

/// The raw values are those of the toolkit that first had such views; others are allowed.
enum class Material { hudWindow = 13, fullScreenUI = 15 };
enum class BlendingMode { behindWindow = 0, withinWindow = 1 };
enum class EffectState { followsWindowActiveState = 0, active = 1, inactive = 2 };

/// What draws a visual effect.
class NativeVisualEffect
{
public:
    virtual ~NativeVisualEffect() = default;

    virtual void setMaterial(Material material) = 0;
    virtual void setBlendingMode(BlendingMode blending) = 0;
    virtual void setState(EffectState state) = 0;
    virtual void setEmphasized(bool emphasized) = 0;
    /// Whether it is a layer of its own.
    virtual void setWantsLayer(bool wantsLayer) = 0;
};

/// The settings of a translucent backdrop, passed through to what draws it.
struct VisualEffectView
{
    /// Makes a native effect without any setting.
    using Context = std::function<std::unique_ptr<NativeVisualEffect>()>;

    VisualEffectView(Material material, BlendingMode blending,
                     EffectState state = EffectState::followsWindowActiveState,
                     bool emphasized = false)
        : material(material), blending(blending), state(state), emphasized(emphasized)
    {
    }

    /// A new native effect with these settings: material, blending, state, emphasized, in this
    /// order, and then a layer. The caller owns it.
    std::unique_ptr<NativeVisualEffect> makeNSView(const Context &context) const;

    /// Sets the four again, in the same order, on the one there is.
    void updateNSView(NativeVisualEffect &view) const;

    Material material;
    BlendingMode blending;
    EffectState state;
    bool emphasized;
};

} // namespace tidewick
