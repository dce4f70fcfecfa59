#include "update/UpdateWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tidewick
{
namespace
{

constexpr int contentWidth = 380;
constexpr int detailsHeight = 120;

QString title(UpdateAction action)
{
    switch (action) {
    case UpdateAction::cancel:
        return QStringLiteral("Cancel");
    case UpdateAction::install:
        return QStringLiteral("Install");
    case UpdateAction::remindMeLater:
        return QStringLiteral("Remind Me Later");
    case UpdateAction::restartNow:
        return QStringLiteral("Restart Now");
    case UpdateAction::later:
        return QStringLiteral("Later");
    case UpdateAction::close:
        break;
    }
    return QStringLiteral("OK");
}

bool isAccepting(UpdateAction action)
{
    return action == UpdateAction::install || action == UpdateAction::restartNow ||
           action == UpdateAction::close;
}

QLabel *makeLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFixedWidth(contentWidth);
    return label;
}

} // namespace

UpdateDialog::UpdateDialog()
    : m_heading(makeLabel()),
      m_text(makeLabel()),
      m_progress(new QProgressBar),
      m_detailsButton(new QPushButton(QStringLiteral("Details"))),
      m_details(new QPlainTextEdit),
      m_buttonBox(new QDialogButtonBox)
{
    setWindowTitle(QStringLiteral("Tidewick"));
    setAttribute(Qt::WA_QuitOnClose, false);

    QFont bold = m_heading->font();
    bold.setBold(true);
    m_heading->setFont(bold);
    m_progress->setAccessibleName(QStringLiteral("Progress"));
    m_detailsButton->setCheckable(true);
    m_detailsButton->setAutoDefault(false);
    m_details->setReadOnly(true);
    m_details->setTabChangesFocus(true);
    m_details->setAccessibleName(QStringLiteral("Details"));
    m_details->setFixedHeight(detailsHeight);
    m_details->hide();
    connect(m_detailsButton, &QPushButton::toggled, m_details, &QWidget::setVisible);

    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_heading);
    layout->addWidget(m_text);
    layout->addWidget(m_progress);
    layout->addWidget(m_detailsButton, 0, Qt::AlignLeft);
    layout->addWidget(m_details);
    layout->addWidget(m_buttonBox);
}

void UpdateDialog::setNotice(const UpdateNotice &notice)
{
    m_heading->setText(notice.heading);
    m_text->setText(notice.text);
    setProgress(notice.progress);
    setDetails(notice.details);
    setButtons(notice.buttons);
    m_onClose = notice.onClose;
}

void UpdateDialog::setProgress(const std::optional<UpdateProgress> &progress)
{
    m_progress->setVisible(progress.has_value());
    const bool isKnown = progress && progress->percentage;
    m_progress->setRange(0, isKnown ? 100 : 0); // an empty range shows as busy
    if (isKnown)
        m_progress->setValue(*progress->percentage);
}

void UpdateDialog::setDetails(const QString &details)
{
    m_detailsButton->setVisible(!details.isEmpty());
    if (m_details->toPlainText() == details)
        return;
    m_details->setPlainText(details);
    m_detailsButton->setChecked(false);
}

// Keeps the same buttons, so that progress does not take the focus from them.
void UpdateDialog::setButtons(const QList<UpdateButton> &buttons)
{
    QList<UpdateAction> actions;
    for (const UpdateButton &button : buttons)
        actions.append(button.action);
    if (actions != m_actions) {
        m_actions = actions;
        m_buttonBox->clear();
        for (const UpdateAction action : actions)
            addButton(action);
    }
    const QList<QAbstractButton *> shown = m_buttonBox->buttons();
    for (const UpdateButton &button : buttons)
        for (QAbstractButton *one : shown)
            if (one->text() == title(button.action))
                one->setEnabled(button.isEnabled);
}

void UpdateDialog::addButton(UpdateAction action)
{
    const auto role =
        isAccepting(action) ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole;
    QPushButton *button = m_buttonBox->addButton(title(action), role);
    connect(button, &QPushButton::clicked, this, [this, action] { Q_EMIT answered(action); });
    if (action == m_actions.first()) {
        button->setDefault(true);
        button->setFocus();
    }
}

void UpdateDialog::reject()
{
    Q_EMIT answered(m_onClose);
}

void UpdateWindow::show(const UpdateNotice &notice, Focus focus)
{
    if (!m_dialog) {
        m_dialog = std::make_unique<UpdateDialog>();
        QObject::connect(m_dialog.get(), &UpdateDialog::answered, m_dialog.get(),
                         [this](UpdateAction action) { m_answer(action); });
    }
    m_dialog->setNotice(notice);
    if (focus == Focus::leave && m_dialog->isVisible())
        return;
    m_dialog->setAttribute(Qt::WA_ShowWithoutActivating, focus == Focus::leave);
    m_dialog->show();
    if (focus == Focus::take) {
        m_dialog->raise();
        m_dialog->activateWindow();
    }
}

void UpdateWindow::change(const UpdateNotice &notice)
{
    if (m_dialog && m_dialog->isVisible())
        m_dialog->setNotice(notice);
}

void UpdateWindow::close()
{
    if (m_dialog)
        m_dialog->hide();
}

void UpdateWindow::setAnswer(const std::function<void(UpdateAction)> &answer)
{
    m_answer = answer;
}

} // namespace tidewick
