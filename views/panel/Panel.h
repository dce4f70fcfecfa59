#pragma once

#include "state/AppState.h"
#include "views/panel/PortListModel.h"

#include <QCoroTask>

#include <QObject>
#include <QUrl>
#include <QtQmlIntegration>

namespace tidewick
{

/// The QML views' access to the store: what they show and what they can request. Main thread only.
class Panel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program makes the one there is.")
    Q_PROPERTY(QAbstractItemModel *ports READ ports CONSTANT)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(int runningCount READ runningCount NOTIFY countsChanged)
    Q_PROPERTY(int liveCount READ liveCount NOTIFY countsChanged)
    /// The process that is being killed; empty if there is none.
    Q_PROPERTY(QString killingPid READ killingPid NOTIFY killingPidChanged)
    Q_PROPERTY(tidewick::Panel::Backdrop backdrop READ backdrop NOTIFY backdropChanged)
    /// Whether the user has switched animations off.
    Q_PROPERTY(double cornerRadius READ edgeRadius CONSTANT)
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY reducesMotionChanged)

public:
    /// Of the panel's edge where something composes the screen, in points.
    static constexpr double cornerRadius = 12;
    /// What is visible through the translucent parts of the panel.
    enum Backdrop { Opaque, Translucent, Blurred };
    Q_ENUM(Backdrop)

    /// `state` must outlive the panel.
    explicit Panel(AppState &state, QObject *parent = nullptr);

    QAbstractItemModel *ports() { return &m_ports; }
    bool isLoading() const { return m_state.isLoading(); }
    int runningCount() const { return static_cast<int>(m_state.runningPorts().size()); }
    int liveCount() const;
    QString killingPid() const { return m_killingPid; }
    Backdrop backdrop() const { return m_backdrop; }
    void setBackdrop(Backdrop backdrop);
    static double edgeRadius() { return cornerRadius; }
    bool reducesMotion() const { return m_reducesMotion; }
    void setReducesMotion(bool reducesMotion);

    /// Starts a scan, unless a process is being killed.
    Q_INVOKABLE void refresh();
    /// Kills the process. Its card shows progress until then and for a moment longer.
    Q_INVOKABLE void kill(const QString &pid);
    /// Opens the server on `port` in the browser.
    Q_INVOKABLE void openPort(const QString &port);
    Q_INVOKABLE void revealDirectory(const QString &path);
    Q_INVOKABLE void quit();

Q_SIGNALS:
    void isLoadingChanged();
    void countsChanged();
    void killingPidChanged();
    void backdropChanged();
    void reducesMotionChanged();
    void openRequested(const QUrl &url);
    void revealRequested(const QString &path);
    void quitRequested();

private:
    QCoro::Task<> killAndShow(QString pid);
    void setKillingPid(const QString &pid);

    AppState &m_state;
    PortListModel m_ports;
    QString m_killingPid;
    Backdrop m_backdrop = Opaque;
    bool m_reducesMotion = false;
};

} // namespace tidewick
