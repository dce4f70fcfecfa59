#pragma once

#include <QGuiApplication>

namespace tidewick
{

/// The application: a status item and no window. Starts the toolkit, hands the work to
/// AppDelegate, and ends it all.
class TidewickApp
{
public:
    TidewickApp(int &argc, char **argv);

    /// Runs until the user quits or a termination signal comes, and returns the exit status.
    /// Returns 0 at once where another instance runs in this session already.
    int run();

private:
    QGuiApplication m_application;
};

} // namespace tidewick
