#include "app/Environment.h"
#include "update/UpdateNotices.h"
#include "update/UpdateWindow.h"

#include <QApplication>
#include <QLineEdit>
#include <QSocketNotifier>

#include <cstdio>
#include <iostream>
#include <string>

using namespace tidewick;

namespace
{

UpdateNotice offer()
{
    UpdateOutcome outcome;
    outcome.kind = UpdateOutcome::available;
    outcome.installed.version = QStringLiteral("1.0-1");
    outcome.update.version = QStringLiteral("1.1-1");
    outcome.summary = QStringLiteral("Shows the development servers of this machine");
    return outcomeNotice(outcome);
}

UpdateNotice failure()
{
    UpdateOutcome outcome;
    outcome.failure = {UpdateError::sources,
                       QStringLiteral("E: Failed to fetch <b>http://example.org</b>\nE: gone")};
    return outcomeNotice(outcome);
}

void show(UpdateWindow &window, const std::string &order)
{
    if (order == "scheduled")
        window.show(offer(), UpdateDialogs::Focus::leave);
    else if (order == "asked")
        window.show(offer(), UpdateDialogs::Focus::take);
    else if (order == "progress")
        window.show(installingNotice({}, {8, 40, true}), UpdateDialogs::Focus::take);
    else if (order == "failed")
        window.show(failure(), UpdateDialogs::Focus::take);
}

int runEditor()
{
    QLineEdit editor;
    editor.setWindowTitle(QStringLiteral("Editor"));
    editor.show();
    return QApplication::exec();
}

} // namespace

// Shows the dialogs of the updates as the lines of its input order, and prints the number of each
// answer. With an argument it is a window for typing, as another program would have it.
int main(int argc, char *argv[])
{
    prepareEnvironment();
    const QApplication application(argc, argv);
    if (argc > 1)
        return runEditor();
    QApplication::setQuitOnLastWindowClosed(false);
    UpdateWindow window;
    window.setAnswer([&window](UpdateAction action) {
        std::printf("%d\n", static_cast<int>(action));
        std::fflush(stdout);
        window.close();
    });
    const QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [&window] {
        std::string order;
        if (std::getline(std::cin, order))
            show(window, order);
        else
            QApplication::quit();
    });
    return QApplication::exec();
}
