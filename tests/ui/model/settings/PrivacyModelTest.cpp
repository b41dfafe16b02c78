#include "ui/model/settings/PrivacyModel.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::privacyModelTest {
namespace {

using std::chrono::milliseconds;

struct PrivacyModelTest : testing::Test {
    struct Recorder final : TelemetryRecorder {
        std::vector<TelemetryEvent> captured;
        void capture(const TelemetryEvent& event) override { captured.push_back(event); }
    };

    test::TempFolder folder;
    FileStore files;
    test::FakeClock clock;
    TelemetryStore store{files, clock, folder.file("telemetry.json"), runAtOnce};
    Recorder recorder;
    PrivacyModel model{store, recorder, clock};
    int changes = 0;

    PrivacyModelTest()
    {
        model.observe([this] { ++changes; });
    }
    [[nodiscard]] TelemetryConfig onDisk() const
    {
        return TelemetryStore::load(store.fileURL(), clock.now());
    }
    void turn() { clock.advance(milliseconds(0)); }
};

TEST_F(PrivacyModelTest, bothKindsAreOnUntilTheUserSaysOtherwise)
{
    EXPECT_TRUE(model.diagnosticsEnabled());
    EXPECT_TRUE(model.productAnalyticsEnabled());
    EXPECT_EQ(model.installID(), onDisk().installID);
}

TEST_F(PrivacyModelTest, eachSwitchIsKeptAtOnceAndTouchesNoOther)
{
    model.setDiagnosticsEnabled(false);
    EXPECT_FALSE(model.diagnosticsEnabled());
    EXPECT_FALSE(onDisk().diagnosticsEnabled);
    EXPECT_TRUE(onDisk().productAnalyticsEnabled);
    model.setProductAnalyticsEnabled(false);
    model.setDiagnosticsEnabled(true);
    EXPECT_TRUE(onDisk().diagnosticsEnabled);
    EXPECT_FALSE(model.productAnalyticsEnabled());
    EXPECT_FALSE(onDisk().productAnalyticsEnabled);
}

TEST_F(PrivacyModelTest, aResetMakesSomebodyNewWhoAllowsTheSame)
{
    model.setDiagnosticsEnabled(false);
    const std::string before = model.installID();
    model.resetAnalyticsID();
    EXPECT_NE(model.installID(), before);
    EXPECT_TRUE(model.installID().starts_with("inst_"));
    EXPECT_EQ(onDisk().installID, model.installID());
    EXPECT_FALSE(onDisk().diagnosticsEnabled);
    EXPECT_TRUE(onDisk().productAnalyticsEnabled);
}

TEST_F(PrivacyModelTest, observersHearOfEachKindOfChangeOnceATurn)
{
    turn();
    EXPECT_EQ(changes, 0);
    model.setDiagnosticsEnabled(false);
    model.setProductAnalyticsEnabled(false);
    EXPECT_EQ(changes, 0); // after the change, not within it
    turn();
    EXPECT_EQ(changes, 1);
    model.setProductAnalyticsEnabled(true);
    turn();
    EXPECT_EQ(changes, 2);
    model.resetAnalyticsID();
    turn();
    EXPECT_EQ(changes, 3);
}

TEST_F(PrivacyModelTest, whatTheUserDoesIsOneEventEach)
{
    model.noteLocalOnly();
    model.noteOnboardingCompleted();
    model.noteCrossPromoClicked();
    ASSERT_EQ(recorder.captured.size(), 3U);
    EXPECT_EQ(recorder.captured[0], TelemetryEvent::switchToLocalOnly());
    EXPECT_EQ(recorder.captured[1], TelemetryEvent::onboardingCompleted());
    EXPECT_EQ(recorder.captured[2].kind(), TelemetryEvent::Kind::crossPromoClicked);
    EXPECT_EQ(recorder.captured[2].properties(), (TelemetryProperties{{"target", "ostrelline"}}));
}

TEST_F(PrivacyModelTest, lookingAndSwitchingIsNoEvent)
{
    model.setDiagnosticsEnabled(false);
    model.setProductAnalyticsEnabled(false);
    model.resetAnalyticsID();
    turn();
    EXPECT_TRUE(recorder.captured.empty());
}

TEST(PrivacyModel, theFixedTexts)
{
    EXPECT_STREQ(PrivacyModel::diagnosticsTitle, "Send anonymous diagnostics");
    EXPECT_STREQ(PrivacyModel::diagnosticsHelp,
                 "Diagnostics include info about errors and crashes if they occur.");
    EXPECT_STREQ(PrivacyModel::analyticsTitle, "Send anonymous product analytics");
    EXPECT_STREQ(PrivacyModel::analyticsHelp,
                 "Analytics include coarse info about how the application was used.");
    EXPECT_STREQ(PrivacyModel::idHelp,
                 "This random ID is the only identifier we send. Resetting it makes this install "
                 "look brand new.");
}

} // namespace
} // namespace vellumor::privacyModelTest
