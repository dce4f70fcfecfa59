#pragma once

#include "update/UpdateDialogs.h"

#include <QDialog>

#include <memory>

class QDialogButtonBox;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace tidewick
{

/// One notice as a small dialog. Everything in it is plain text.
class UpdateDialog : public QDialog
{
    Q_OBJECT

public:
    UpdateDialog();

    void setNotice(const UpdateNotice &notice);
    /// Escape and the close button give the answer that the notice names.
    void reject() override;

Q_SIGNALS:
    void answered(tidewick::UpdateAction action);

private:
    void setProgress(const std::optional<UpdateProgress> &progress);
    void setDetails(const QString &details);
    void setButtons(const QList<UpdateButton> &buttons);
    void addButton(UpdateAction action);

    QLabel *m_heading;
    QLabel *m_text;
    QProgressBar *m_progress;
    QPushButton *m_detailsButton;
    QPlainTextEdit *m_details;
    QDialogButtonBox *m_buttonBox;
    QList<UpdateAction> m_actions;
    UpdateAction m_onClose = UpdateAction::close;
};

/// The dialogs on the desktop: one window, made when it is first needed and then kept.
class UpdateWindow : public UpdateDialogs
{
public:
    void show(const UpdateNotice &notice, Focus focus) override;
    void change(const UpdateNotice &notice) override;
    void close() override;
    void setAnswer(const std::function<void(UpdateAction)> &answer) override;

    /// Null before the first notice.
    UpdateDialog *dialog() const { return m_dialog.get(); }

private:
    std::unique_ptr<UpdateDialog> m_dialog;
    std::function<void(UpdateAction)> m_answer;
};

} // namespace tidewick
