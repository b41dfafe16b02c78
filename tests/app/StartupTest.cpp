#include "app/Startup.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellumor::startupTest {
namespace {

using Startup::Mode;
using Startup::Outcome;

// A copy that may run already, or come first at the last moment; notes what it is asked.
struct FakeInstance final : SingleInstance {
    std::optional<int> running;
    std::optional<int> cameFirst;
    std::vector<std::string> calls;

    std::optional<int> otherCopy() override
    {
        calls.emplace_back("otherCopy");
        return running;
    }
    std::optional<int> claim(std::function<void(const std::string&)>) override
    {
        calls.emplace_back("claim");
        return cameFirst;
    }
    void activateOther() override { calls.emplace_back("activateOther"); }
};

using Startup::Screen;

struct StartupTest : testing::Test {
    FakeInstance instance;
    std::string logged;

    Outcome begin(Screen screen)
    {
        testing::internal::CaptureStderr();
        const Outcome outcome = Startup::begin(instance, screen, [](const std::string&) {});
        logged = testing::internal::GetCapturedStderr();
        return outcome;
    }
};

TEST(Startup, onlyExactlyOneAsksForDiagnostics)
{
    EXPECT_EQ(Startup::mode({{"VELLUMOR_DIAG", "1"}}), Mode::diagnostics);
    for (const char* text : {"", "0", "true", "11", " 1", "1 ", "yes"})
        EXPECT_EQ(Startup::mode({{"VELLUMOR_DIAG", text}}), Mode::application) << text;
    EXPECT_EQ(Startup::mode({}), Mode::application);
}

TEST(Startup, rootIsRefusedInSomebodyElsesHomeAlone)
{
    EXPECT_TRUE(Startup::isForeignRoot(0, 1000));
    EXPECT_FALSE(Startup::isForeignRoot(0, 0));
    EXPECT_FALSE(Startup::isForeignRoot(0, std::nullopt));
    EXPECT_FALSE(Startup::isForeignRoot(1000, 1000));
    EXPECT_FALSE(Startup::isForeignRoot(1000, 0));
}

TEST_F(StartupTest, theOnlyCopyRuns)
{
    EXPECT_EQ(begin(Screen::there), Outcome::run);
    EXPECT_EQ(instance.calls, (std::vector<std::string>{"otherCopy", "claim"}));
    EXPECT_EQ(logged, "");
}

TEST_F(StartupTest, aSecondCopyHandsOverToTheFirstAndNamesIt)
{
    instance.running = 4711;
    EXPECT_EQ(begin(Screen::there), Outcome::handedOver);
    EXPECT_EQ(instance.calls, (std::vector<std::string>{"otherCopy", "activateOther"}));
    EXPECT_EQ(logged, "[main] another Vellumor (pid 4711) is already running — handing over\n");
}

TEST_F(StartupTest, theHandOverComesBeforeTheQuestionOfAScreen)
{
    instance.running = 4711;
    EXPECT_EQ(begin(Screen::absent), Outcome::handedOver);
}

TEST_F(StartupTest, withoutAScreenNothingIsClaimed)
{
    EXPECT_EQ(begin(Screen::absent), Outcome::noDisplay);
    EXPECT_EQ(instance.calls, std::vector<std::string>{"otherCopy"});
    EXPECT_EQ(logged, "[main] no display — cannot start\n");
}

TEST_F(StartupTest, ofTwoStartsAtOneMomentTheLaterHandsOver)
{
    instance.cameFirst = 12;
    EXPECT_EQ(begin(Screen::there), Outcome::handedOver);
    EXPECT_EQ(instance.calls, (std::vector<std::string>{"otherCopy", "claim", "activateOther"}));
    EXPECT_EQ(logged, "[main] another Vellumor (pid 12) is already running — handing over\n");
}

} // namespace
} // namespace vellumor::startupTest
