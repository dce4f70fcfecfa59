#include "platform/session/SingleInstance.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>

using namespace tidewick;

namespace
{

const QString applicationId = QStringLiteral("org.tidewick.Tidewick");

class SingleInstanceTest : public testing::Test
{
protected:
    SingleInstanceTest()
    {
        QObject::connect(&first, &SingleInstance::activated, &first,
                         [this](const QVariantMap &data) { activations.append(data); });
    }

    PrivateBus bus;
    SingleInstance first{bus.connect()};
    SingleInstance second{bus.connect()};
    QList<QVariantMap> activations;
};

} // namespace

TEST_F(SingleInstanceTest, isFirstUntilAnotherIs)
{
    EXPECT_EQ(first.claim(), InstanceClaim::first);
    EXPECT_EQ(second.claim(), InstanceClaim::another);
}

TEST_F(SingleInstanceTest, cannotTellWithoutABus)
{
    SingleInstance alone{QDBusConnection(QStringLiteral("none"))};
    EXPECT_EQ(alone.claim(), InstanceClaim::noBus);
}

TEST_F(SingleInstanceTest, showsItsPanelForTheSecond)
{
    first.claim();
    const QVariantMap data{{QStringLiteral("activation-token"), QStringLiteral("t")}};
    second.activateOther(data);
    EXPECT_TRUE(waitUntil([this] { return !activations.isEmpty(); }));
    EXPECT_EQ(activations, QList<QVariantMap>{data});
}

TEST_F(SingleInstanceTest, showsItsPanelHoweverItIsActivated)
{
    first.claim();
    QDBusConnection launcher = bus.connect();
    const auto call = [&launcher](const char *method, const QVariantList &arguments) {
        auto message = QDBusMessage::createMethodCall(
            applicationId, QStringLiteral("/org/tidewick/Tidewick"),
            QStringLiteral("org.freedesktop.Application"), QString::fromLatin1(method));
        message.setArguments(arguments);
        launcher.asyncCall(message);
    };
    const QVariantMap none;
    call("Activate", {none});
    call("Open", {QStringList(), none});
    call("ActivateAction", {QStringLiteral("x"), QVariantList(), none});
    EXPECT_TRUE(waitUntil([this] { return activations.size() == 3; }));
}

TEST_F(SingleInstanceTest, tellsThatTheSessionHasEnded)
{
    bool hasEnded = false;
    QObject::connect(&first, &SingleInstance::sessionEnded, &first,
                     [&hasEnded] { hasEnded = true; });
    first.claim();
    bus.kill();
    EXPECT_TRUE(waitUntil([&hasEnded] { return hasEnded; }));
}

TEST(PlatformData, isTheProofThatTheUserAsked)
{
    qputenv("DESKTOP_STARTUP_ID", "a_TIME1");
    qputenv("XDG_ACTIVATION_TOKEN", "t");
    EXPECT_EQ(takePlatformData(),
              (QVariantMap{{QStringLiteral("desktop-startup-id"), QStringLiteral("a_TIME1")},
                           {QStringLiteral("activation-token"), QStringLiteral("t")}}));
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN")) << "no child has it";
    qputenv("DESKTOP_STARTUP_ID", "");
    EXPECT_EQ(takePlatformData(), QVariantMap());
    qunsetenv("DESKTOP_STARTUP_ID");
}
