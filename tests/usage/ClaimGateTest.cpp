#include "usage/ClaimGate.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::claimGateTest {
namespace {

TEST(ClaimGate, isShutWhenEveryPolledAccountFailsToDecodeAndOneFailureIsForgiven)
{
    constexpr int most = std::numeric_limits<int>::max();
    struct Row {
        const char* story;
        std::map<std::string, int> streaks;
        std::vector<std::string> rotation;
        bool open;
    };
    const Row rows[] = {
        {"nobody is polled", {}, {}, true},
        {"nobody is polled, and old failures are known", {{"a", 9}}, {}, true},
        {"no failure", {{"a", 0}}, {"a"}, true},
        {"an account that never failed", {}, {"a"}, true},
        {"one failure of the only account", {{"a", 1}}, {"a"}, true},
        {"two failures of the only account", {{"a", 2}}, {"a"}, false},
        {"one failure of each of two", {{"a", 1}, {"b", 1}}, {"a", "b"}, false},
        {"one of two is well", {{"a", 5}, {"b", 0}}, {"a", "b"}, true},
        {"one of two is unknown", {{"a", 5}}, {"a", "b"}, true},
        {"one that is well comes first", {{"a", 0}, {"b", 5}}, {"a", "b"}, true},
        {"below none counts as none", {{"a", -1}}, {"a"}, true},
        {"below none does not make up for others", {{"a", 5}, {"b", -5}}, {"a", "b"}, true},
        {"one that is well, but is not polled", {{"a", 2}, {"b", 0}}, {"a"}, false},
        {"one that fails, but is not polled", {{"a", 1}, {"b", 7}}, {"a"}, true},
        {"a sum beyond an int", {{"a", most}, {"b", most}}, {"a", "b"}, false},
    };
    for (const auto& [story, streaks, rotation, open] : rows) {
        SCOPED_TRACE(story);
        EXPECT_EQ(ClaimGate::shouldClaim(streaks, rotation), open);
    }
}

} // namespace
} // namespace vellumor::claimGateTest
