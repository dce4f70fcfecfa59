#pragma once

#include "platform/Popover.h"

#include <QQuickView>

namespace tidewick
{

/// A frameless window above the others, near the pointer, which stands on the status item when it
/// is clicked. Escape closes it, and the loss of the focus where it is transient. Created once,
/// then shown and hidden.
class PopoverWindow : public QQuickView, public Popover
{
    Q_OBJECT

public:
    PopoverWindow();

    void setContentSize(QSize points) override;
    void setContentView(const QUrl &view, const QVariantMap &properties) override;
    void setBehavior(PopoverBehavior behavior) override;
    bool isShown() const override { return isVisible(); }
    void show(const std::optional<ClickEvent> &event) override;
    void performClose() override { hide(); }
    void becomeKey() override { requestActivate(); }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    PopoverBehavior m_behavior = PopoverBehavior::applicationDefined;
};

} // namespace tidewick
