#include "update/UpdateWindow.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "update/UpdateNotices.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
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

struct StatusRow
{
    const char *name;
    uint status;
    const char *text;
};

class InstallationStatus : public testing::TestWithParam<StatusRow>
{
};

TEST_P(InstallationStatus, isToldInWords)
{
    const UpdateNotice notice = installingNotice({}, {GetParam().status, {}, true});
    EXPECT_EQ(notice.text, QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Rows, InstallationStatus,
                         testing::Values(StatusRow{"setUp", 2, "Preparing…"},
                                         StatusRow{"download", 8, "Downloading…"},
                                         StatusRow{"install", 9, "Installing…"},
                                         StatusRow{"locked", 30, "Waiting for the package system…"},
                                         StatusRow{"password", 31, "Waiting for your permission…"},
                                         StatusRow{"unheardOf", 4000, "Preparing…"}),
                         rowName);

struct OutcomeRow
{
    const char *name;
    UpdateOutcome::Kind kind;
    const char *heading;
    const char *text;
};

class OutcomeNotice : public testing::TestWithParam<OutcomeRow>
{
};

TEST_P(OutcomeNotice, tellsWhatWasFound)
{
    const UpdateNotice notice =
        outcomeNotice({GetParam().kind,
                       {QStringLiteral("tidewick"), QStringLiteral("1.0"), {}, {}},
                       {QStringLiteral("tidewick"), QStringLiteral("1.1"), {}, {}},
                       {},
                       {UpdateError::sources, {}}});
    EXPECT_EQ(notice.heading, QString::fromUtf8(GetParam().heading));
    EXPECT_EQ(notice.text, QString::fromUtf8(GetParam().text));
    EXPECT_FALSE(notice.buttons.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OutcomeNotice,
    testing::Values(OutcomeRow{"upToDate", UpdateOutcome::upToDate, "Tidewick is up to date",
                               "You have the newest version, 1.0."},
                    OutcomeRow{"available", UpdateOutcome::available, "Tidewick 1.1 is available",
                               "You have version 1.0."},
                    OutcomeRow{"heldBack", UpdateOutcome::heldBack, "Tidewick 1.1 is held back",
                               "This system holds it back. You have version 1.0."},
                    OutcomeRow{"notPackaged", UpdateOutcome::notPackaged,
                               "This copy cannot be updated here",
                               "Tidewick was not installed from a package."},
                    OutcomeRow{"notOffered", UpdateOutcome::notOffered,
                               "This copy cannot be updated here",
                               "None of this system's package sources offers Tidewick."},
                    OutcomeRow{"failed", UpdateOutcome::failed, "Updates could not be checked",
                               "A package source could not be reached."}),
    rowName);
