#include "update/UpdateWindow.h"
#include "update/UpdaterController.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

#include <cstdio>

using namespace tidewick;

namespace
{

/// The real dialogs, whose user agrees to everything: presses the default button of each, and quits
/// after the first that leads nowhere. What is shown goes to standard output.
class AgreeableWindow : public UpdateWindow
{
public:
    void show(const UpdateNotice &notice, Focus focus) override
    {
        UpdateWindow::show(notice, focus);
        read(notice);
    }

    void change(const UpdateNotice &notice) override
    {
        UpdateWindow::change(notice);
        read(notice);
    }

private:
    void read(const UpdateNotice &notice)
    {
        const QString line = QStringLiteral(APP_VERSION ": %1 | %2")
                                 .arg(notice.heading, notice.text)
                                 .replace(QLatin1Char('\n'), QLatin1Char(' '));
        if (line != m_lastLine) {
            std::puts(line.toUtf8().constData());
            std::fflush(stdout);
        }
        m_lastLine = line;
        if (notice.progress)
            return;
        for (QPushButton *button : dialog()->findChildren<QPushButton *>())
            if (button->isDefault())
                QTimer::singleShot(0, button, &QPushButton::click);
        if (notice.buttons.first().action == UpdateAction::close)
            QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    }

    QString m_lastLine;
};

} // namespace

// Stands in for Tidewick in an update from end to end: checks, installs and restarts by itself.
int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    UpdaterSystem system = UpdaterSystem::real();
    system.dialogs = std::make_unique<AgreeableWindow>();
    UpdaterController updater(true, std::move(system));
    QTimer::singleShot(0, &updater, [&updater] { updater.checkForUpdates(); });
    return QApplication::exec();
}
