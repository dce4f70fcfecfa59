#pragma once

#include "views/panel/VisualEffectView.h"

#include <QtQmlIntegration>

/// The values of a visual effect under the names that QML can use, which start with a capital.
namespace tidewick::visual_effect
{

Q_NAMESPACE
QML_NAMED_ELEMENT(VisualEffect)

enum Material {
    HudWindow = int(tidewick::Material::hudWindow),
    FullScreenUI = int(tidewick::Material::fullScreenUI),
};
Q_ENUM_NS(Material)

enum BlendingMode {
    BehindWindow = int(tidewick::BlendingMode::behindWindow),
    WithinWindow = int(tidewick::BlendingMode::withinWindow),
};
Q_ENUM_NS(BlendingMode)

enum State {
    FollowsWindowActiveState = int(EffectState::followsWindowActiveState),
    Active = int(EffectState::active),
    Inactive = int(EffectState::inactive),
};
Q_ENUM_NS(State)

} // namespace tidewick::visual_effect
