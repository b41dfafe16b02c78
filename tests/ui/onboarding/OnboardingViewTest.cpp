#include "ui/onboarding/OnboardingView.h"

#include "ui/settings/SettingsTesting.h"

namespace vellumor::onboardingViewTest {
namespace {

using test::Names;

struct OnboardingViewTest : test::SettingsTesting {
    int finished = 0;
    std::optional<OnboardingView> view;

    ~OnboardingViewTest() override
    {
        view.reset();
        pass();
    }
    void start(const Names& names)
    {
        addAll(names);
        rescan();
        view.emplace(state, privacy, [this] { ++finished; });
        view->bringToFront();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*view));
        pass();
    }
    void go(const char* button)
    {
        test::press(*view, button);
        pass();
    }
    [[nodiscard]] bool says(const std::string& text) const { return test::says(*view, text); }
    [[nodiscard]] bool offers(const char* button) const { return test::isShown(*view, button); }
    // Through to the last step.
    void goToTheEnd()
    {
        while (offers("Continue"))
            go("Continue");
    }
    [[nodiscard]] QCheckBox& box(const char* name) const
    {
        return test::named<QCheckBox>(*view, name);
    }
    static constexpr const char* localOnly = "Use local cache only";
    static constexpr const char* diagnostics = "Send anonymous diagnostics";
    static constexpr const char* analytics = "Send anonymous product analytics";
};

TEST_F(OnboardingViewTest, itGreetsFirst)
{
    start({"ada", "ben"});
    EXPECT_TRUE(says("Welcome to Vellumor"));
    EXPECT_TRUE(says("Claude usage in your menu bar."));
    EXPECT_TRUE(says("Step 1 of 3"));
    EXPECT_FALSE(offers("Back"));
    EXPECT_TRUE(offers("Continue"));
    EXPECT_FALSE(offers("Get Started"));
    bool hasImage = false;
    for (const QLabel* label : test::shown<QLabel>(*view))
        hasImage |= !label->pixmap(Qt::ReturnByValue).isNull();
    EXPECT_TRUE(hasImage);
}

TEST_F(OnboardingViewTest, severalAccountsAreArrangedInTheMiddle)
{
    start({"ada", "ben"});
    go("Continue");
    EXPECT_TRUE(says("Step 2 of 3"));
    EXPECT_TRUE(says("Found 2 Claude accounts"));
    EXPECT_TRUE(says("Track the ones you want to watch, pick which appear in the menu bar, and "
                     "rename or reorder them. You can change all of this later in Settings."));
    EXPECT_TRUE(offers("Back"));
    EXPECT_TRUE(offers("Continue"));
    EXPECT_FALSE(offers("Get Started"));
    go("Continue");
    EXPECT_TRUE(says("Step 3 of 3"));
    EXPECT_TRUE(offers("Get Started"));
    EXPECT_FALSE(offers("Continue"));
    go("Back");
    EXPECT_TRUE(says("Step 2 of 3"));
    go("Back");
    EXPECT_TRUE(says("Step 1 of 3"));
    EXPECT_FALSE(offers("Back"));
}

TEST_F(OnboardingViewTest, aSingleAccountHasTwoSteps)
{
    start({"ada"});
    EXPECT_TRUE(says("Step 1 of 2"));
    go("Continue");
    EXPECT_TRUE(says("Step 2 of 2"));
    EXPECT_TRUE(says("What Vellumor reads & sends"));
    EXPECT_TRUE(offers("Get Started"));
    EXPECT_TRUE(offers("Back"));
}

TEST_F(OnboardingViewTest, withoutAccountsTheStepAboutThemStands)
{
    start({});
    EXPECT_TRUE(says("Step 1 of 3"));
    go("Continue");
    EXPECT_TRUE(says("No accounts found yet"));
}

TEST_F(OnboardingViewTest, theStepsStayWhateverIsFoundMeanwhile)
{
    start({});
    add("ada");
    rescan();
    go("Continue");
    EXPECT_TRUE(says("Step 2 of 3"));
    EXPECT_TRUE(says("Found 1 Claude account"));
    add("ben");
    rescan();
    pass(); // while it is seen
    EXPECT_TRUE(says("Found 2 Claude accounts"));
    EXPECT_EQ(test::allNamed<QLineEdit>(*view, "Name").size(), 2U);
    EXPECT_TRUE(says("Step 2 of 3"));
}

TEST_F(OnboardingViewTest, aSingleAccountKeepsItsTwoStepsThoughAnotherIsFound)
{
    start({"ada"});
    add("ben");
    rescan();
    go("Continue");
    EXPECT_TRUE(says("Step 2 of 2"));
    EXPECT_TRUE(says("What Vellumor reads & sends"));
}

TEST_F(OnboardingViewTest, theAccountsCanBeChangedAsInTheSettings)
{
    start({"ada", "ben"});
    go("Continue");
    const auto fields = test::allNamed<QLineEdit>(*view, "Name");
    ASSERT_EQ(fields.size(), 2U);
    test::type(*fields[0], "Work");
    test::key(*fields[0], Qt::Key_Return);
    pass();
    EXPECT_EQ(recordOnDisk("ada").name, "Work");
    EXPECT_TRUE(says("Step 2 of 3")); // Enter was for the name alone
    go("Tracked — polled and shown");
    EXPECT_FALSE(recordOnDisk("ada").tracked);
    go("Shown in the menu bar — click to hide"); // the second account's
    EXPECT_FALSE(recordOnDisk("ben").pinned);
    auto& handle = *test::allNamed<QAbstractButton>(*view, "Move").at(0);
    test::key(handle, Qt::Key_Down);
    pass();
    EXPECT_EQ(recordOnDisk("ben").order, 0);
    EXPECT_EQ(recordOnDisk("ada").order, 1);
    go("More actions");
    test::pick(QStringLiteral("Remove from Vellumor…"));
    pass();
    ASSERT_NE(test::dialog(), nullptr);
    test::press(*test::dialog(), "Remove");
    pass();
    EXPECT_TRUE(recordOnDisk("ben").isRemoved());
    EXPECT_TRUE(says("Found 1 Claude account"));
}

TEST_F(OnboardingViewTest, itSaysWhatIsReadAndSent)
{
    start({"ada"});
    go("Continue");
    for (const char* text :
         {"What Vellumor reads & sends", "What Vellumor reads",
          "To get the usage data of your accounts, Vellumor reads what Claude Code has already "
          "cached on your Mac first. Only when there is nothing fresh to read does it request your "
          "usage data from the same endpoint Claude Code uses, with the token Claude Code already "
          "stores.",
          "This isn't an officially supported API. If you'd rather stick to cache reading only, "
          "check the box below.",
          "Stops all of Vellumor's usage requests. Data will be updated from Claude Code's own "
          "local cache only.",
          "What Vellumor sends",
          "Vellumor sends anonymous, opt-out telemetry so that we can keep improving it.",
          "It never includes your sign-in tokens, email, or organization, your usage percentages "
          "or credit amounts, file paths from your Mac, or the raw data returned by Claude.",
          "Diagnostics include info about errors and crashes if they occur.",
          "Analytics include coarse info about how the application was used."})
        EXPECT_TRUE(says(text)) << text;
    EXPECT_FALSE(box(localOnly).isChecked());
    EXPECT_TRUE(box(diagnostics).isChecked());
    EXPECT_TRUE(box(analytics).isChecked());
}

TEST_F(OnboardingViewTest, eachChoiceIsKeptAtOnce)
{
    start({"ada"});
    go("Continue");
    go(diagnostics);
    EXPECT_FALSE(telemetryOnDisk().diagnosticsEnabled);
    EXPECT_TRUE(telemetryOnDisk().productAnalyticsEnabled);
    go(analytics);
    EXPECT_FALSE(telemetryOnDisk().productAnalyticsEnabled);
    go(diagnostics);
    EXPECT_TRUE(telemetryOnDisk().diagnosticsEnabled);
    EXPECT_FALSE(onDisk().localCacheOnly);
}

TEST_F(OnboardingViewTest, readingFromTheCacheAloneIsOneEventAndOnlyWhenItIsTurnedOn)
{
    start({"ada"});
    go("Continue");
    go(localOnly);
    EXPECT_TRUE(onDisk().localCacheOnly);
    ASSERT_EQ(recorder.captured.size(), 1U);
    EXPECT_EQ(recorder.captured[0], TelemetryEvent::switchToLocalOnly());
    go(localOnly);
    EXPECT_FALSE(onDisk().localCacheOnly);
    EXPECT_EQ(recorder.captured.size(), 1U);
}

TEST_F(OnboardingViewTest, whatIsChangedInTheSettingsMeanwhileIsShown)
{
    start({"ada"});
    go("Continue");
    state.updatePreferences([](Preferences& p) { p.localCacheOnly = true; });
    pass();
    EXPECT_TRUE(box(localOnly).isChecked());
    privacy.setDiagnosticsEnabled(false);
    pass();
    EXPECT_FALSE(box(diagnostics).isChecked());
    privacy.setProductAnalyticsEnabled(false);
    pass();
    EXPECT_FALSE(box(analytics).isChecked());
}

TEST_F(OnboardingViewTest, onlyItsLastButtonFinishesIt)
{
    start({"ada", "ben"});
    goToTheEnd();
    EXPECT_EQ(finished, 0);
    view->close();
    pass();
    EXPECT_EQ(finished, 0);
    view->bringToFront();
    pass();
    go("Get Started");
    EXPECT_EQ(finished, 1);
}

TEST_F(OnboardingViewTest, enterGoesOnFromStepToStep)
{
    start({"ada", "ben"});
    for (const char* step : {"Step 1 of 3", "Step 2 of 3", "Step 3 of 3"}) {
        EXPECT_TRUE(says(step));
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        test::key(*QApplication::focusWidget(), Qt::Key_Return);
        pass();
    }
    EXPECT_EQ(finished, 1);
}

TEST_F(OnboardingViewTest, eachStepBeginsOnItsDefaultButton)
{
    start({"ada", "ben"});
    go("Continue");
    test::allNamed<QLineEdit>(*view, "Name").at(0)->setFocus(Qt::TabFocusReason);
    go("Continue");
    EXPECT_EQ(QApplication::focusWidget(), &test::named<QPushButton>(*view, "Get Started"));
    EXPECT_TRUE(test::named<QPushButton>(*view, "Get Started").isDefault());
}

TEST_F(OnboardingViewTest, everyControlIsReachedWithTheTabKeyAndHasAName)
{
    start({"ada", "ben", "cyd"});
    for (int step = 0; step < 3; ++step) {
        if (step == 1) {
            state.reorder({1}, 0); // while it is seen
            pass();
        }
        std::vector<QWidget*> expected;
        for (QWidget* const widget : test::shown<QWidget>(*view)) {
            if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isEnabled() &&
                qobject_cast<QScrollArea*>(widget) == nullptr) {
                expected.push_back(widget);
                EXPECT_NE(test::nameOf(widget) + widget->accessibleName().toStdString(), "")
                    << widget->metaObject()->className();
            }
        }
        ASSERT_FALSE(expected.empty());
        expected.front()->setFocus(Qt::TabFocusReason);
        std::vector<QWidget*> order;
        for (QWidget* at = expected.front(); order.size() < expected.size();) {
            order.push_back(at);
            test::key(*at, Qt::Key_Tab);
            at = QApplication::focusWidget();
            ASSERT_NE(at, nullptr);
        }
        EXPECT_EQ(order, expected) << step;
        if (step < 2)
            go("Continue");
    }
}

TEST_F(OnboardingViewTest, noTextIsClippedAndTheSizeStays)
{
    add("cyd", TokenStatus::notFound);
    for (const double scale : {1.0, 1.5}) {
        const test::FontScale font(scale);
        start(scale == 1.0 ? Names{"ada", "ben"} : Names{});
        const QSize size = view->size();
        for (;;) {
            SCOPED_TRACE(std::to_string(scale));
            test::expectNothingClipped(*view);
            EXPECT_EQ(view->size(), size);
            EXPECT_LE(view->height(), view->screen()->availableGeometry().height());
            if (!offers("Continue"))
                break;
            go("Continue");
        }
        view.reset();
    }
}

TEST_F(OnboardingViewTest, aFewAccountsStandCloseTogetherAtTheTop)
{
    start({"ada", "ben"});
    go("Continue");
    const auto fields = test::allNamed<QLineEdit>(*view, "Name");
    ASSERT_EQ(fields.size(), 2U);
    const auto top = [this](const QWidget* widget) { return widget->mapTo(&*view, QPoint()).y(); };
    EXPECT_LT(top(fields[1]) - top(fields[0]), 3 * fields[0]->height());
}

} // namespace
} // namespace vellumor::onboardingViewTest
