#include "usage/RedirectPolicy.h"

#include <gtest/gtest.h>

namespace vellumor::redirectPolicyTest {
namespace {

TEST(RedirectPolicy, theTokenStaysWithTheVerySameHostAlone)
{
    struct Row {
        std::optional<std::string> from;
        std::optional<std::string> to;
        bool strips;
    };
    const Row rows[] = {
        {"api.example", "api.example", false},
        {"api.example", "API.Example", false},
        {"api.example", "www.api.example", true},
        {"api.example", "example", true},
        {"api.example", "api.example.org", true},
        {"api.example", "api.example.", true},
        {"api.example", "", true},
        {"", "api.example", true},
        {"", "", true},
        {std::nullopt, "api.example", true},
        {"api.example", std::nullopt, true},
        {std::nullopt, std::nullopt, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.from.value_or("(none)") + " -> " + row.to.value_or("(none)"));
        EXPECT_EQ(RedirectPolicy::shouldStripAuthorization(row.from, row.to), row.strips);
    }
}

} // namespace
} // namespace vellumor::redirectPolicyTest
