#include "update/UpdateWindow.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "update/UpdateNotices.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QWindow>

using namespace tidewick;

namespace
{

using Focus = UpdateDialogs::Focus;

const QString details = QStringLiteral("<b>E:</b> the service's words");

UpdateNotice failedNotice()
{
    UpdateOutcome outcome;
    outcome.failure = {UpdateError::locked, details};
    return outcomeNotice(outcome);
}

UpdateNotice offer(const QString &version = QStringLiteral("1.1-1"))
{
    return outcomeNotice({UpdateOutcome::available,
                          {QStringLiteral("tidewick"), QStringLiteral("1.0-1"), {}, {}},
                          {QStringLiteral("tidewick"), version, {}, {}},
                          QStringLiteral("Watches servers"),
                          {}});
}

class UpdateWindowTest : public testing::Test
{
protected:
    UpdateWindowTest()
    {
        window.setAnswer([this](UpdateAction action) { answers.append(action); });
    }

    UpdateDialog *dialog() const { return window.dialog(); }

    template <class Widget>
    QList<Widget *> shown() const
    {
        QList<Widget *> widgets = dialog()->findChildren<Widget *>();
        widgets.removeIf([](const Widget *widget) { return !widget->isVisible(); });
        return widgets;
    }

    QStringList texts() const
    {
        QStringList texts;
        for (const QLabel *label : shown<QLabel>())
            texts.append(label->text());
        return texts;
    }

    QPushButton *button(const QString &title) const
    {
        for (QPushButton *one : shown<QPushButton>())
            if (one->text() == title)
                return one;
        throw std::runtime_error("no button " + title.toStdString());
    }

    QStringList buttons() const
    {
        QStringList titles;
        for (const QPushButton *one : shown<QPushButton>())
            titles.append(one->text());
        titles.sort();
        return titles;
    }

    void press(int key)
    {
        QWidget *receiver = dialog()->focusWidget() ? dialog()->focusWidget() : dialog();
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
        QApplication::sendEvent(receiver, &down);
        QApplication::sendEvent(receiver, &up);
    }

    UpdateWindow window;
    QList<UpdateAction> answers;
};

using Actions = QList<UpdateAction>;

} // namespace

TEST_F(UpdateWindowTest, makesNoWindowBeforeItIsNeeded)
{
    window.change(checkingNotice());
    window.close();
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(UpdateWindowTest, showsThatItIsCheckingAtOnce)
{
    window.show(checkingNotice(), Focus::take);
    EXPECT_TRUE(dialog()->isVisible());
    EXPECT_EQ(texts().first(), QStringLiteral("Checking for updates…"));
    ASSERT_EQ(shown<QProgressBar>().size(), 1);
    EXPECT_EQ(shown<QProgressBar>().first()->maximum(), 0) << "busy";
    EXPECT_EQ(buttons(), QStringList(QStringLiteral("Cancel")));
}

TEST_F(UpdateWindowTest, isModalToNothing)
{
    window.show(checkingNotice(), Focus::take);
    EXPECT_FALSE(dialog()->isModal());
    EXPECT_EQ(dialog()->windowHandle()->modality(), Qt::NonModal);
}

TEST_F(UpdateWindowTest, takesTheFocusOnlyWhereTold)
{
    window.show(offer(), Focus::leave);
    EXPECT_TRUE(dialog()->testAttribute(Qt::WA_ShowWithoutActivating));
    window.close();
    window.show(offer(), Focus::take);
    EXPECT_FALSE(dialog()->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(waitUntil([this] { return dialog()->isActiveWindow(); }));
}

TEST_F(UpdateWindowTest, offersTheUpdate)
{
    window.show(offer(), Focus::take);
    EXPECT_EQ(texts(), QStringList({QStringLiteral("Tidewick 1.1-1 is available"),
                                    QStringLiteral("You have version 1.0-1.\nWatches servers")}));
    EXPECT_EQ(buttons(),
              QStringList({QStringLiteral("Install"), QStringLiteral("Remind Me Later")}));
    EXPECT_TRUE(button(QStringLiteral("Install"))->isDefault());
    button(QStringLiteral("Remind Me Later"))->click();
    button(QStringLiteral("Install"))->click();
    EXPECT_EQ(answers, Actions({UpdateAction::remindMeLater, UpdateAction::install}));
}

TEST_F(UpdateWindowTest, worksFromTheKeyboard)
{
    window.show(offer(), Focus::take);
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    EXPECT_EQ(answers, Actions({UpdateAction::install, UpdateAction::remindMeLater}));
}

TEST_F(UpdateWindowTest, itsCloseButtonAnswers)
{
    window.show(checkingNotice(), Focus::take);
    dialog()->close();
    EXPECT_EQ(answers, Actions({UpdateAction::cancel}));
}

TEST_F(UpdateWindowTest, keepsTheDetailsBehindAButton)
{
    window.show(failedNotice(), Focus::take);
    EXPECT_EQ(texts(),
              QStringList({QStringLiteral("Updates could not be checked"),
                           QStringLiteral("Another program is installing software; try again when "
                                          "it is done.")}));
    EXPECT_TRUE(shown<QPlainTextEdit>().isEmpty());
    button(QStringLiteral("Details"))->click();
    ASSERT_EQ(shown<QPlainTextEdit>().size(), 1);
    EXPECT_EQ(shown<QPlainTextEdit>().first()->toPlainText(), details);
    window.show(checkingNotice(), Focus::take);
    EXPECT_TRUE(shown<QPlainTextEdit>().isEmpty());
    EXPECT_EQ(buttons(), QStringList(QStringLiteral("Cancel")));
}

TEST_F(UpdateWindowTest, showsForeignTextAsPlainText)
{
    const QString markup = QStringLiteral("<img src=http://127.0.0.1/x>2.0");
    window.show(offer(markup), Focus::take);
    EXPECT_TRUE(texts().first().contains(markup));
    for (const QLabel *label : shown<QLabel>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(UpdateWindowTest, keepsItsButtonsAndFocusWhileTheProgressMoves)
{
    window.show(installingNotice({}, {8, 10, true}), Focus::take);
    QPushButton *cancel = button(QStringLiteral("Cancel"));
    EXPECT_TRUE(cancel->isEnabled());
    EXPECT_EQ(shown<QProgressBar>().first()->value(), 10);
    window.change(installingNotice({}, {9, 60, false}));
    EXPECT_EQ(button(QStringLiteral("Cancel")), cancel);
    EXPECT_FALSE(cancel->isEnabled());
    EXPECT_EQ(shown<QProgressBar>().first()->value(), 60);
    EXPECT_TRUE(texts().contains(QStringLiteral("Installing…")));
}

TEST_F(UpdateWindowTest, changesNothingThatIsClosed)
{
    window.show(checkingNotice(), Focus::take);
    window.close();
    window.change(offer());
    EXPECT_FALSE(dialog()->isVisible());
}

TEST_F(UpdateWindowTest, hasANameForEveryControl)
{
    window.show(failedNotice(), Focus::take);
    button(QStringLiteral("Details"))->click();
    const auto nameOf = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    };
    for (QPushButton *one : shown<QPushButton>())
        EXPECT_FALSE(nameOf(one).isEmpty());
    EXPECT_EQ(nameOf(shown<QPlainTextEdit>().first()), QStringLiteral("Details"));
    window.show(checkingNotice(), Focus::take);
    EXPECT_EQ(nameOf(shown<QProgressBar>().first()), QStringLiteral("Progress"));
}

TEST_F(UpdateWindowTest, isADialogOfTheSystemsSize)
{
    window.show(failedNotice(), Focus::take);
    EXPECT_EQ(dialog()->windowTitle(), QStringLiteral("Tidewick"));
    EXPECT_FALSE(dialog()->testAttribute(Qt::WA_QuitOnClose)) << "the program goes on without it";
    const auto labels = shown<QLabel>();
    ASSERT_EQ(labels.size(), 2);
    EXPECT_TRUE(labels[0]->font().bold());
    EXPECT_FALSE(labels[1]->font().bold());
    for (const QLabel *label : labels) {
        EXPECT_EQ(label->width(), 380);
        EXPECT_TRUE(label->wordWrap());
    }
    const QSize closed = dialog()->size();
    EXPECT_EQ(dialog()->minimumSize(), closed);
    EXPECT_EQ(dialog()->maximumSize(), closed);
    QPushButton *opening = button(QStringLiteral("Details"));
    EXPECT_EQ(opening->x(), labels[0]->x()) << "on the left";
    opening->click();
    EXPECT_EQ(shown<QPlainTextEdit>().first()->height(), 120);
    EXPECT_TRUE(waitUntil([&] { return dialog()->height() > closed.height() + 100; }));
}

TEST_F(UpdateWindowTest, hasItsPartsInTheirOrder)
{
    UpdateNotice notice = failedNotice();
    notice.progress = UpdateProgress{};
    window.show(notice, Focus::take);
    button(QStringLiteral("Details"))->click();
    EXPECT_TRUE(waitUntil([this] { return shown<QPlainTextEdit>().first()->y() > 0; }));
    const auto place = [this](const QWidget *widget) {
        return widget->mapTo(dialog(), QPoint()).y();
    };
    const QList<int> places{place(shown<QLabel>()[0]),
                            place(shown<QLabel>()[1]),
                            place(shown<QProgressBar>().first()),
                            place(button(QStringLiteral("Details"))),
                            place(shown<QPlainTextEdit>().first()),
                            place(button(QStringLiteral("OK")))};
    for (int i = 1; i < places.size(); ++i)
        EXPECT_LT(places[i - 1], places[i]) << i;
}

TEST_F(UpdateWindowTest, detailsAreToBeReadAndLeftByTheTabKey)
{
    window.show(failedNotice(), Focus::take);
    QPushButton *opening = button(QStringLiteral("Details"));
    EXPECT_TRUE(opening->isCheckable());
    EXPECT_FALSE(opening->autoDefault()) << "the Return key stays with the default button";
    opening->click();
    EXPECT_TRUE(shown<QPlainTextEdit>().first()->isReadOnly());
    EXPECT_TRUE(shown<QPlainTextEdit>().first()->tabChangesFocus());
    opening->click();
    EXPECT_TRUE(shown<QPlainTextEdit>().isEmpty());
}

TEST_F(UpdateWindowTest, detailsStayOpenWhileTheyAreTheSame)
{
    UpdateNotice notice = failedNotice();
    window.show(notice, Focus::take);
    button(QStringLiteral("Details"))->click();
    window.change(notice);
    EXPECT_EQ(shown<QPlainTextEdit>().size(), 1);
    notice.details = QStringLiteral("other words");
    window.change(notice);
    EXPECT_TRUE(shown<QPlainTextEdit>().isEmpty());
    button(QStringLiteral("Details"))->click();
    EXPECT_EQ(shown<QPlainTextEdit>().first()->toPlainText(), QStringLiteral("other words"));
}

TEST_F(UpdateWindowTest, progressIsOutOfAHundredOrBusy)
{
    window.show(installingNotice({}, {8, 100, true}), Focus::take);
    EXPECT_EQ(shown<QProgressBar>().first()->minimum(), 0);
    EXPECT_EQ(shown<QProgressBar>().first()->maximum(), 100);
    EXPECT_EQ(shown<QProgressBar>().first()->value(), 100);
    window.change(installingNotice({}, {9, {}, true}));
    EXPECT_EQ(shown<QProgressBar>().first()->maximum(), 0);
    window.change(offer());
    EXPECT_TRUE(shown<QProgressBar>().isEmpty());
}

TEST_F(UpdateWindowTest, firstButtonHasTheFocus)
{
    window.show(offer(), Focus::take);
    EXPECT_EQ(dialog()->focusWidget(), button(QStringLiteral("Install")));
    window.change(installedNotice({}));
    EXPECT_EQ(dialog()->focusWidget(), button(QStringLiteral("Restart Now")));
    EXPECT_TRUE(button(QStringLiteral("Restart Now"))->isDefault());
    EXPECT_FALSE(button(QStringLiteral("Later"))->isDefault());
}

TEST_F(UpdateWindowTest, comesToTheFrontOnlyToTakeTheFocus)
{
    window.show(offer(), Focus::take);
    ASSERT_TRUE(waitUntil([this] { return dialog()->isActiveWindow(); }));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return other.isActiveWindow(); }));
    window.show(checkingNotice(), Focus::leave);
    EXPECT_EQ(texts().first(), checkingNotice().heading);
    EXPECT_FALSE(waitUntil([this] { return dialog()->isActiveWindow(); }, 200));
    EXPECT_FALSE(dialog()->testAttribute(Qt::WA_ShowWithoutActivating)) << "it is open already";
    window.show(offer(), Focus::take);
    EXPECT_TRUE(waitUntil([this] { return dialog()->isActiveWindow(); }));
}

struct ButtonRow
{
    const char *name;
    UpdateAction action;
    const char *title;
    QDialogButtonBox::ButtonRole role;
};

class UpdateButtonOf : public UpdateWindowTest, public testing::WithParamInterface<ButtonRow>
{
};

TEST_P(UpdateButtonOf, hasItsTitleAndPlace)
{
    UpdateNotice notice = checkingNotice();
    notice.buttons = {{GetParam().action}};
    window.show(notice, Focus::take);
    QPushButton *one = button(QString::fromUtf8(GetParam().title));
    EXPECT_EQ(dialog()->findChild<QDialogButtonBox *>()->buttonRole(one), GetParam().role);
    one->click();
    EXPECT_EQ(answers, Actions({GetParam().action}));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, UpdateButtonOf,
    testing::Values(
        ButtonRow{"cancel", UpdateAction::cancel, "Cancel", QDialogButtonBox::RejectRole},
        ButtonRow{"install", UpdateAction::install, "Install", QDialogButtonBox::AcceptRole},
        ButtonRow{"remind", UpdateAction::remindMeLater, "Remind Me Later",
                  QDialogButtonBox::RejectRole},
        ButtonRow{"restart", UpdateAction::restartNow, "Restart Now", QDialogButtonBox::AcceptRole},
        ButtonRow{"later", UpdateAction::later, "Later", QDialogButtonBox::RejectRole},
        ButtonRow{"close", UpdateAction::close, "OK", QDialogButtonBox::AcceptRole}),
    rowName);
