#include "updates/UpdateResult.h"

#include <gtest/gtest.h>

#include <utility>

namespace vellumor::updateResultTest {
namespace {

using Kind = UpdateFailure::Kind;

TEST(UpdateResult, eachFailureHasItsWords)
{
    const std::pair<UpdateFailure, const char*> rows[] = {
        {{Kind::transport, 0, "Host not found"}, "Host not found"},
        {{Kind::redirected, 0, ""}, "the server sent us somewhere else"},
        {{Kind::http, 404, ""}, "the server answered with status 404"},
        {{Kind::tooLarge, 0, ""}, "the answer is too large"},
        {{Kind::malformed, 0, ""}, "the answer can't be read"},
        {{Kind::badSignature, 0, ""}, "the answer isn't signed by the maker"},
        {{Kind::replayed, 0, ""}, "the answer is older than one seen before"},
        {{Kind::unusable, 0, ""}, "the answer isn't for this version of Vellumor"},
    };
    for (const auto& [failure, words] : rows)
        EXPECT_EQ(failure.description(), words);
}

} // namespace
} // namespace vellumor::updateResultTest
