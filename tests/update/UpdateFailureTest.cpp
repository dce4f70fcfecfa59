#include "update/UpdateFailure.h"
#include "tests/support/TestText.h"
#include "update/UpdateCheck.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QSet>

using namespace tidewick;

struct CodeRow
{
    const char *name;
    uint code;
    UpdateError error;
};

class ErrorCode : public testing::TestWithParam<CodeRow>
{
};

TEST_P(ErrorCode, hasItsReason)
{
    EXPECT_EQ(failureOfErrorCode(GetParam().code, {}).error, GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Rows, ErrorCode,
                         testing::Values(CodeRow{"noNetwork", 2, UpdateError::noNetwork},
                                         CodeRow{"internal", 4, UpdateError::other},
                                         CodeRow{"keyFailure", 5, UpdateError::untrusted},
                                         CodeRow{"notInstalled", 7, UpdateError::noLongerOffered},
                                         CodeRow{"notFound", 8, UpdateError::noLongerOffered},
                                         CodeRow{"badHash", 10, UpdateError::download},
                                         CodeRow{"unmetDependency", 13, UpdateError::dependencies},
                                         CodeRow{"cancelled", 17, UpdateError::cancelled},
                                         CodeRow{"locked", 26, UpdateError::locked},
                                         CodeRow{"nothingToUpdate", 27,
                                                 UpdateError::noLongerOffered},
                                         CodeRow{"badSignature", 30, UpdateError::untrusted},
                                         CodeRow{"noSignature", 31, UpdateError::untrusted},
                                         CodeRow{"badSourceList", 33, UpdateError::sources},
                                         CodeRow{"fileConflict", 35, UpdateError::dependencies},
                                         CodeRow{"conflict", 36, UpdateError::dependencies},
                                         CodeRow{"sourceNotAvailable", 37, UpdateError::sources},
                                         CodeRow{"corrupt", 40, UpdateError::download},
                                         CodeRow{"noMoreMirrors", 43, UpdateError::sources},
                                         CodeRow{"noSpace", 46, UpdateError::noSpace},
                                         CodeRow{"notAuthorised", 48, UpdateError::notAuthorized},
                                         CodeRow{"gone", 49, UpdateError::noLongerOffered},
                                         CodeRow{"unsignedSource", 50, UpdateError::untrusted},
                                         CodeRow{"unsignedUpdate", 51, UpdateError::untrusted},
                                         CodeRow{"doesNotConfigure", 56, UpdateError::installation},
                                         CodeRow{"doesNotInstall", 58, UpdateError::installation},
                                         CodeRow{"sourceDead", 64, UpdateError::sources},
                                         CodeRow{"cancelledForOthers", 65, UpdateError::cancelled},
                                         CodeRow{"unfinished", 66, UpdateError::unfinished},
                                         CodeRow{"lockNeeded", 67, UpdateError::locked},
                                         CodeRow{"unheardOf", 4000, UpdateError::other}),
                         rowName);

class Exit : public testing::TestWithParam<CodeRow>
{
};

TEST_P(Exit, hasItsReason)
{
    const UpdateFailure failure = failureOfExit(GetParam().code);
    EXPECT_EQ(failure.error, GetParam().error);
    EXPECT_EQ(failure.details, GetParam().error == UpdateError::other
                                   ? QStringLiteral("exit %1").arg(GetParam().code)
                                   : QString());
}

INSTANTIATE_TEST_SUITE_P(Rows, Exit,
                         testing::Values(CodeRow{"failed", 2, UpdateError::other},
                                         CodeRow{"cancelled", 3, UpdateError::cancelled},
                                         CodeRow{"keyRequired", 4, UpdateError::untrusted},
                                         CodeRow{"licenceRequired", 5, UpdateError::other},
                                         CodeRow{"killed", 6, UpdateError::vanished},
                                         CodeRow{"mediaRequired", 7, UpdateError::other},
                                         CodeRow{"needsUntrusted", 8, UpdateError::untrusted},
                                         CodeRow{"cancelledForOthers", 9, UpdateError::cancelled},
                                         CodeRow{"unheardOf", 4000, UpdateError::other}),
                         rowName);

struct CallRow
{
    const char *name;
    const char *error;
    UpdateError expected;
};

class RefusedCall : public testing::TestWithParam<CallRow>
{
};

TEST_P(RefusedCall, hasItsReasonAndKeepsTheWords)
{
    const QDBusMessage reply =
        QDBusMessage::createError(QString::fromLatin1(GetParam().error), QStringLiteral("words"));
    const UpdateFailure failure = failureOfCall(QDBusError(reply));
    EXPECT_EQ(failure.error, GetParam().expected);
    EXPECT_EQ(failure.details, QString::fromLatin1(GetParam().error) + QStringLiteral("\nwords"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedCall,
    testing::Values(
        CallRow{"unknown", "org.freedesktop.DBus.Error.ServiceUnknown", UpdateError::noService},
        CallRow{"nobody", "org.freedesktop.DBus.Error.NameHasNoOwner", UpdateError::noService},
        CallRow{"timeout", "org.freedesktop.DBus.Error.Timeout", UpdateError::timedOut},
        CallRow{"noServer", "org.freedesktop.DBus.Error.NoServer", UpdateError::noBus},
        CallRow{"strangers", "org.freedesktop.DBus.Error.AuthFailed", UpdateError::notAuthorized},
        CallRow{"noReply", "org.freedesktop.DBus.Error.NoReply", UpdateError::timedOut},
        CallRow{"tooSlowToStart", "org.freedesktop.DBus.Error.TimedOut", UpdateError::timedOut},
        CallRow{"noBus", "org.freedesktop.DBus.Error.Disconnected", UpdateError::noBus},
        CallRow{"spawn", "org.freedesktop.DBus.Error.Spawn.ExecFailed", UpdateError::startFailed},
        CallRow{"masked", "org.freedesktop.systemd1.UnitMasked", UpdateError::startFailed},
        CallRow{"busPolicy", "org.freedesktop.DBus.Error.AccessDenied", UpdateError::notAuthorized},
        CallRow{"polkit", "org.freedesktop.PackageKit.Transaction.RefusedByPolicy",
                UpdateError::notAuthorized},
        CallRow{"other", "org.example.Other", UpdateError::other}),
    rowName);

TEST(UpdateFailure, isTellableInOneSentenceEach)
{
    QSet<QString> sentences;
    for (int error = 0; error <= int(UpdateError::other); ++error) {
        const QString words = sentence(UpdateError(error));
        sentences.insert(words);
        EXPECT_TRUE(words.endsWith(QLatin1Char('.'))) << words.toStdString();
        EXPECT_EQ(words.count(QStringLiteral(". ")), 0) << words.toStdString();
        EXPECT_LT(words.size(), 80) << words.toStdString();
    }
    EXPECT_EQ(sentences.size(), int(UpdateError::other) + 1) << "each has its own";
}

TEST(UpdateFailure, boundsAndCleansForeignText)
{
    EXPECT_EQ(asLine(QStringLiteral(" a\n\tb\u202e\u0000c ")), QStringLiteral("a b c"));
    EXPECT_EQ(asParagraphs(QStringLiteral("a\r\nb\x1b[31m")), QStringLiteral("a \nb [31m"));
    EXPECT_EQ(asLine(QStringLiteral("a\u2028b")), QStringLiteral("a b"));
    EXPECT_EQ(asParagraphs(QStringLiteral("a\u2028b\u2029c")), QStringLiteral("a b c"));
    EXPECT_EQ(asLine(QString(1 << 20, QLatin1Char('x'))).size(), 201);
    EXPECT_EQ(asParagraphs(QString(1 << 20, QLatin1Char('x'))).size(), 4001);
}

TEST(SearchPattern, meansThePathAndNothingElse)
{
    EXPECT_EQ(searchPattern(QStringLiteral("/usr/bin/tidewick")),
              QStringLiteral("/usr/bin/tidewick"));
    EXPECT_EQ(searchPattern(QStringLiteral("/a.b/[c]*^$\\+")),
              QStringLiteral("/a\\.b/\\[c]\\*\\^\\$\\\\+"));
}
