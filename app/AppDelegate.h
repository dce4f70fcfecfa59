#pragma once

#include "platform/Appearance.h"
#include "platform/LoginItem.h"
#include "platform/Popover.h"
#include "platform/SettingsWindow.h"
#include "platform/StatusItem.h"
#include "platform/Updater.h"
#include "platform/Workspace.h"
#include "state/AppState.h"
#include "views/panel/Panel.h"
#include "views/settings/Settings.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

namespace tidewick
{

/// What the delegate needs of the desktop. The updater is made at the start, the windows when they
/// are first used, the rest when launching has finished.
struct Desktop
{
    /// `isStarting` begins the updater's own schedule at once. The delegate asks for that; a test
    /// of the updater may do without it.
    std::function<std::unique_ptr<Updater>(bool isStarting)> makeUpdater;
    std::function<std::unique_ptr<StatusItem>()> makeStatusItem;
    std::function<std::unique_ptr<Popover>()> makePopover;
    std::function<std::unique_ptr<Workspace>()> makeWorkspace;
    std::function<std::unique_ptr<LoginItem>()> makeLoginItem;
    std::function<std::unique_ptr<SettingsWindow>()> makeWindow;
    std::function<std::unique_ptr<Appearance>()> makeAppearance;
};

/// The application's delegate: creates the status item, the popover with the panel, and the store
/// when launching has finished, and keeps the number in the status bar equal to the number of
/// listeners. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Creates the updater, and nothing else yet. `workers` must outlive the delegate.
    AppDelegate(SystemInterfaces system, Workers &workers, Desktop desktop);
    ~AppDelegate() override;
    Q_DISABLE_COPY_MOVE(AppDelegate)

    /// Builds everything, in this order: the status item, the popover, the store, what ties the
    /// number to the store, and the panel in the popover.
    void applicationDidFinishLaunching();

    /// Draws the icon with `count` beside it, or the icon alone at 0.
    void updateStatusIcon(qint64 count);

    /// Answers a click on the status item: a right one opens the menu, any other opens or closes
    /// the panel. Without a click it does nothing. Opening the panel starts no refresh.
    void togglePopover();

    /// Shows the panel, and never closes it: the user has started the program once more.
    void activate();

    /// Shows the settings window. It is created once, and so is the state of its toggle.
    void showSettings();

    void checkForUpdates();

    /// Ends the application; nothing is saved or asked.
    void quitApp();

private:
    void hostPanel();
    void openContextMenu();
    std::unique_ptr<SettingsWindow> makeSettingsWindow();

    SystemInterfaces m_system;
    Workers &m_workers;
    Desktop m_desktop;

    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<Workspace> m_workspace;
    std::unique_ptr<AppState> m_appState;
    std::unique_ptr<Panel> m_panel;
    std::unique_ptr<Appearance> m_appearance;
    std::unique_ptr<Popover> m_popover; // destroyed before the panel that it shows
    bool m_hadCards = false;
    std::unique_ptr<LoginItem> m_loginItem;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<SettingsWindow> m_settingsWindow; // destroyed before the settings that it shows
    std::unique_ptr<Updater> m_updaterController;
};

/// The picture in `iconFile`, or the symbol "network" if there is none.
QImage statusImage(const QString &iconFile);

/// What the status item's tooltip says of `runningPorts`.
QString statusSummary(const QList<PortInfo> &runningPorts);

} // namespace tidewick
