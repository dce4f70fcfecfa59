#include "views/settings/Settings.h"

#include <gtest/gtest.h>

#include <QString>

#include <optional>
#include <string>

using namespace tidewick;

namespace
{

/// What it prints if both registrations end with `error`.
std::string printed(const std::optional<QString> &error, bool isEnabled)
{
    const auto registration = [&error] {
        return error;
    };
    Settings settings(registration, registration);
    testing::internal::CaptureStdout();
    settings.setLaunchAtLogin(isEnabled);
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST(Settings, failureIsALineAndSuccessIsNone)
{
    const auto error = QStringLiteral("Read-only file system");
    EXPECT_EQ(printed(error, true), "Failed to enable launch at login: Read-only file system\n");
    EXPECT_EQ(printed(error, false), "Failed to disable launch at login: Read-only file system\n");
    EXPECT_EQ(printed(std::nullopt, true), "");
}
