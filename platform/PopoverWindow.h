#pragma once

#include "platform/Popover.h"

#include <QQuickView>

namespace tidewick
{

/// A frameless window above the others, near the pointer, which stands on the status item when it
/// is clicked. Escape and the loss of the focus close it. Created once, then shown and hidden.
class PopoverWindow : public QQuickView, public Popover
{
    Q_OBJECT

public:
    PopoverWindow();

    void setContentSize(QSize points) override;
    void setContentView(const QUrl &view, const QVariantMap &properties) override;
    void toggle() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void drop();
};

} // namespace tidewick
