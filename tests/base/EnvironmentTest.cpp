#include "base/Environment.h"

#include <gtest/gtest.h>

namespace vellumor::environmentTest {

TEST(Environment, anEntryIsSplitAtItsFirstEqualsSign)
{
    const char* entries[] = {"HOME=/home/a", "OPTIONS=a=b=c", "EMPTY=", nullptr};
    const Environment expected = {{"HOME", "/home/a"}, {"OPTIONS", "a=b=c"}, {"EMPTY", ""}};
    EXPECT_EQ(readEnvironment(entries), expected);
}

TEST(Environment, anEntryWithoutAnEqualsSignIsLeftOut)
{
    const char* entries[] = {"LONELY", "", "A=1", nullptr};
    EXPECT_EQ(readEnvironment(entries), (Environment{{"A", "1"}}));
}

TEST(Environment, ofTwoEntriesWithOneNameTheFirstCounts)
{
    const char* entries[] = {"A=first", "A=second", nullptr};
    EXPECT_EQ(value(readEnvironment(entries), "A"), "first");
}

TEST(Environment, noEntriesAtAllGiveAnEmptyEnvironment)
{
    const char* const none[] = {nullptr};
    EXPECT_TRUE(readEnvironment(none).empty());
    EXPECT_TRUE(readEnvironment(nullptr).empty());
}

TEST(Environment, aVariableThatIsEmptyCountsAsUnset)
{
    const Environment environment = {{"EMPTY", ""}, {"BLANK", " "}};
    EXPECT_EQ(value(environment, "EMPTY"), std::nullopt);
    EXPECT_EQ(value(environment, "BLANK"), " ");
    EXPECT_EQ(value(environment, "MISSING"), std::nullopt);
    EXPECT_EQ(value(environment, "empty"), std::nullopt);
}

} // namespace vellumor::environmentTest
