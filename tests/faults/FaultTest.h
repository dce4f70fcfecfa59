#pragma once

#include "state/AppState.h"
#include "state/Workers.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/system/SharedDirectory.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <memory>
#include <optional>

/// A real store over the real tools, and real servers beside it. A test breaks something, sees what
/// a scan makes of it, mends it, and sees that the next scan tells the truth.
class FaultTest : public testing::Test
{
protected:
    FaultTest();
    ~FaultTest() override;

    /// Makes the store, over other interfaces than the usual ones where they are given, and waits
    /// for its first scan. Every other is the test's own: the timer stands still.
    void start(std::optional<tidewick::SystemInterfaces> system = std::nullopt);

    /// One whole scan and its publication; false where it does not end.
    bool refresh();
    /// Waits for the scans that overlap, and their publication.
    void endEveryScan();

    /// Asks the store to kill the process. What it answers is there once it does.
    std::shared_ptr<const std::optional<bool>> startKill(qint64 pid);
    /// What the store answers to a request to kill the process; nothing where it does not.
    std::optional<bool> kill(qint64 pid);
    std::optional<bool> kill(const ServerProgram &server) { return kill(server.processId()); }
    /// Whether the store tells that it killed `server`, and it ends.
    bool killEnds(ServerProgram &server);

    /// A web server that the scan lists, on any port where that is 0.
    std::unique_ptr<ServerProgram> serve(int port = 0);

    /// The records of `server`: one, while the list is the truth.
    QList<tidewick::PortInfo> rowsOf(const ServerProgram &server) const;
    /// Whether a scan without an error has listed `server` with all that there is to know of it.
    testing::AssertionResult tellsTheTruthAbout(const ServerProgram &server) const;

    /// Expects that `server` still runs, that a scan tells the truth about it, that a kill ends it,
    /// and that the next scan knows.
    void allIsWellWith(ServerProgram &server);

    tidewick::SystemInterfaces realSystem() const;
    /// The supplied tools, where every user can run them, over the stock ones.
    tidewick::ToolTable realTools() const;

    const QTemporaryDir directory;
    const SharedDirectory programs;
    tidewick::Workers workers;
    std::unique_ptr<tidewick::AppState> store;
};
