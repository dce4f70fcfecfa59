#include "update/UpdateNotices.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

using Buttons = QList<UpdateButton>;

const PackageId installed{QStringLiteral("tidewick"), QStringLiteral("1.0"), {}, {}};
const PackageId update{QStringLiteral("tidewick"), QStringLiteral("1.1\n"), {}, {}};
const QString details = QStringLiteral("E: its words");

struct NoticeRow
{
    const char *name;
    UpdateNotice notice;
    const char *heading;
    const char *text;
    Buttons buttons = {{UpdateAction::close}};
    UpdateAction onClose = UpdateAction::close;
    std::optional<UpdateProgress> progress = {};
    QString details = {};
};

UpdateNotice outcome(UpdateOutcome::Kind kind, const QString &summary = {})
{
    return outcomeNotice({kind, installed, update, summary, {UpdateError::sources, details}});
}

} // namespace

class Notice : public testing::TestWithParam<NoticeRow>
{
};

TEST_P(Notice, tellsWhatThereIsAndWhatCanBeDone)
{
    const UpdateNotice &notice = GetParam().notice;
    EXPECT_EQ(notice.heading, QString::fromUtf8(GetParam().heading));
    EXPECT_EQ(notice.text, QString::fromUtf8(GetParam().text));
    EXPECT_EQ(notice.buttons, GetParam().buttons);
    EXPECT_EQ(notice.onClose, GetParam().onClose);
    EXPECT_EQ(notice.progress, GetParam().progress);
    EXPECT_EQ(notice.details, GetParam().details);
}

INSTANTIATE_TEST_SUITE_P(
    OfACheck, Notice,
    testing::Values(
        NoticeRow{"checking", checkingNotice(), "Checking for updates…",
                  "The system's package sources are asked.", Buttons{{UpdateAction::cancel}},
                  UpdateAction::cancel, UpdateProgress{}},
        NoticeRow{"upToDate", outcome(UpdateOutcome::upToDate), "Tidewick is up to date",
                  "You have the newest version, 1.0."},
        NoticeRow{"available", outcome(UpdateOutcome::available), "Tidewick 1.1 is available",
                  "You have version 1.0.",
                  Buttons{{UpdateAction::install}, {UpdateAction::remindMeLater}},
                  UpdateAction::remindMeLater},
        NoticeRow{"availableWithASummary",
                  outcome(UpdateOutcome::available, QStringLiteral("Watches servers")),
                  "Tidewick 1.1 is available", "You have version 1.0.\nWatches servers",
                  Buttons{{UpdateAction::install}, {UpdateAction::remindMeLater}},
                  UpdateAction::remindMeLater},
        NoticeRow{"heldBack", outcome(UpdateOutcome::heldBack), "Tidewick 1.1 is held back",
                  "This system holds it back. You have version 1.0."},
        NoticeRow{"notPackaged", outcome(UpdateOutcome::notPackaged),
                  "This copy cannot be updated here", "Tidewick was not installed from a package."},
        NoticeRow{"notOffered", outcome(UpdateOutcome::notOffered),
                  "This copy cannot be updated here",
                  "None of this system's package sources offers Tidewick."},
        NoticeRow{"failed", outcome(UpdateOutcome::failed), "Updates could not be checked",
                  "A package source could not be reached.", Buttons{{UpdateAction::close}},
                  UpdateAction::close, std::nullopt, details}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OfAnInstallation, Notice,
    testing::Values(
        NoticeRow{"installing", installingNotice(update, {8, 40, true}), "Installing Tidewick 1.1",
                  "Downloading…", Buttons{{UpdateAction::cancel, true}}, UpdateAction::close,
                  UpdateProgress{40}},
        NoticeRow{"tooLateToCancel", installingNotice(update, {9, {}, false}),
                  "Installing Tidewick 1.1", "Installing…", Buttons{{UpdateAction::cancel, false}},
                  UpdateAction::close, UpdateProgress{}},
        NoticeRow{"cancelling", cancellingNotice(update), "Installing Tidewick 1.1", "Stopping…",
                  Buttons{{UpdateAction::cancel, false}}, UpdateAction::close, UpdateProgress{}},
        NoticeRow{"installed", installedNotice(update), "Tidewick 1.1 is installed",
                  "It is used from the next start on.",
                  Buttons{{UpdateAction::restartNow}, {UpdateAction::later}}, UpdateAction::later},
        NoticeRow{"installationFailed", installationFailedNotice({UpdateError::noSpace, details}),
                  "The update could not be installed", "There is not enough space on the disk.",
                  Buttons{{UpdateAction::close}}, UpdateAction::close, std::nullopt, details},
        NoticeRow{"restartFailed", restartFailedNotice(), "Tidewick could not be restarted",
                  "Quit it and start it again to use the new version."}),
    rowName);

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
                         testing::Values(StatusRow{"wait", 1, "Waiting for the package system…"},
                                         StatusRow{"setUp", 2, "Preparing…"},
                                         StatusRow{"download", 8, "Downloading…"},
                                         StatusRow{"install", 9, "Installing…"},
                                         StatusRow{"update", 10, "Installing…"},
                                         StatusRow{"commit", 16, "Installing…"},
                                         StatusRow{"locked", 30, "Waiting for the package system…"},
                                         StatusRow{"password", 31, "Waiting for your permission…"},
                                         StatusRow{"unheardOf", 4000, "Preparing…"}),
                         rowName);
