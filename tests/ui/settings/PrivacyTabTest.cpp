#include "ui/settings/PrivacyTab.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::privacyTabTest {
namespace {

struct PrivacyTabTest : test::SettingsTesting {
    void openPrivacy() { open(SettingsTab::privacy); }
    [[nodiscard]] QCheckBox& box(const char* name) const
    {
        return test::named<QCheckBox>(*window, name);
    }
    static constexpr const char* diagnostics = "Send anonymous diagnostics";
    static constexpr const char* analytics = "Send anonymous product analytics";
};

TEST_F(PrivacyTabTest, itSaysWhatIsSent)
{
    openPrivacy();
    for (const char* text :
         {"Diagnostics include info about errors and crashes if they occur.",
          "Analytics include coarse info about how the application was used.",
          "Telemetry of any kind never includes your sign-in tokens, email, or organization, your "
          "usage percentages or credit amounts, file paths from your Mac, or the raw data returned "
          "by Claude.",
          "Anonymous analytics ID",
          "This random ID is the only identifier we send. Resetting it makes this install look "
          "brand new."})
        EXPECT_TRUE(windowSays(text)) << text;
    EXPECT_TRUE(box(diagnostics).isChecked());
    EXPECT_TRUE(box(analytics).isChecked());
    EXPECT_TRUE(windowSays(telemetryStore.current().installID));
}

TEST_F(PrivacyTabTest, eachSwitchIsKeptAtOnce)
{
    openPrivacy();
    pressIt(diagnostics);
    EXPECT_FALSE(telemetryOnDisk().diagnosticsEnabled);
    EXPECT_TRUE(telemetryOnDisk().productAnalyticsEnabled);
    EXPECT_FALSE(box(diagnostics).isChecked());
    pressIt(analytics);
    EXPECT_FALSE(telemetryOnDisk().productAnalyticsEnabled);
    pressIt(diagnostics);
    EXPECT_TRUE(telemetryOnDisk().diagnosticsEnabled);
    EXPECT_FALSE(telemetryOnDisk().productAnalyticsEnabled);
}

TEST_F(PrivacyTabTest, theNameOfTheInstallationIsMadeAnew)
{
    openPrivacy();
    pressIt(analytics);
    const std::string before = telemetryStore.current().installID;
    pressIt("Reset analytics ID");
    const std::string after = telemetryOnDisk().installID;
    EXPECT_NE(after, before);
    EXPECT_TRUE(windowSays(after));
    EXPECT_FALSE(windowSays(before));
    EXPECT_FALSE(box(analytics).isChecked()); // what is allowed stays
    EXPECT_FALSE(telemetryOnDisk().productAnalyticsEnabled);
}

TEST_F(PrivacyTabTest, aChangeFromElsewhereIsShownWhileItIsSeen)
{
    openPrivacy();
    QCheckBox& shown = box(analytics);
    privacy.setProductAnalyticsEnabled(false);
    pass();
    EXPECT_FALSE(shown.isChecked());
    window->close();
    privacy.setProductAnalyticsEnabled(true);
    pass();
    EXPECT_FALSE(shown.isChecked());
    openPrivacy();
    EXPECT_TRUE(shown.isChecked());
}

TEST_F(PrivacyTabTest, twoLinksLeadToThePolicyAndTheEvents)
{
    openPrivacy();
    for (auto* const button : test::shown<QAbstractButton>(*window)) {
        if (test::roleOf(button) == QAccessible::Link)
            button->click();
    }
    ASSERT_EQ(done.size(), 2U);
    EXPECT_TRUE(done[0].ends_with("/privacy")) << done[0];
    EXPECT_TRUE(done[1].ends_with("/transparency")) << done[1];
}

} // namespace
} // namespace vellumor::privacyTabTest
