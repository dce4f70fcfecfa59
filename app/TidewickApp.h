#pragma once

#include <QApplication>
#include <QVariantMap>

namespace tidewick
{

/// The application: a status item and no window. Starts the toolkit, hands the work to
/// AppDelegate, and ends it all.
class TidewickApp
{
public:
    TidewickApp(int &argc, char **argv);

    /// Runs until the user quits or a termination signal comes, and returns the exit status.
    /// If another instance runs in this session, that one shows its panel, and this returns 0.
    int run();

private:
    const bool m_isAutostarted;
    const QVariantMap m_platformData; // what the desktop passed to this start
    QApplication m_application;
};

} // namespace tidewick
