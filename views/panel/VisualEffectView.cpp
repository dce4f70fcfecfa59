#include "views/panel/VisualEffectView.h"

namespace tidewick
{

std::unique_ptr<NativeVisualEffect> VisualEffectView::makeNSView(const Context &context) const
{
    auto view = context();
    updateNSView(*view);
    view->setWantsLayer(true);
    return view;
}

void VisualEffectView::updateNSView(NativeVisualEffect &view) const
{
    view.setMaterial(material);
    view.setBlendingMode(blending);
    view.setState(state);
    view.setEmphasized(emphasized);
}

} // namespace tidewick
