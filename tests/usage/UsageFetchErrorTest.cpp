#include "usage/UsageFetchError.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::usageFetchErrorTest {
namespace {

using Kind = UsageFetchError::Kind;

UsageFetchError rateLimited(std::optional<double> retryAfter)
{
    return {Kind::rateLimited, "", retryAfter, 0};
}

TEST(UsageFetchError, describesEachKind)
{
    const std::pair<UsageFetchError, const char*> rows[] = {
        {{Kind::keychain, "no matching Keychain item", {}, 0},
         "keychain: no matching Keychain item"},
        {rateLimited(std::nullopt), "rate limited (429)"},
        {rateLimited(120.0), "rate limited (429, Retry-After 120s)"},
        {rateLimited(1.9), "rate limited (429, Retry-After 1s)"},
        {rateLimited(-1.9), "rate limited (429, Retry-After -1s)"},
        {rateLimited(-0.5), "rate limited (429, Retry-After 0s)"},
        {{Kind::http, "", {}, 500}, "HTTP 500"},
        {{Kind::http, "", {}, -1}, "HTTP -1"},
        {{Kind::decode, "why", {}, 0}, "decode: why"},
        {{Kind::transport, "why", {}, 0}, "transport: why"},
        {{Kind::noService, "", {}, 0}, "no Keychain service resolved for this account"},
        {{Kind::unauthorized, "", {}, 0}, "unauthorized (401) — token expired/invalid"},
        {{Kind::forbidden, "", {}, 0}, "forbidden (403) — account-level problem"},
    };
    for (const auto& [error, text] : rows)
        EXPECT_EQ(error.description(), text);
}

TEST(UsageFetchError, aRetryAfterThatNoIntegerHoldsIsDescribedAllTheSame)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(rateLimited(infinity).description(), "rate limited (429, Retry-After infs)");
    EXPECT_EQ(rateLimited(-infinity).description(), "rate limited (429, Retry-After -infs)");
    EXPECT_EQ(rateLimited(std::numeric_limits<double>::quiet_NaN()).description(),
              "rate limited (429, Retry-After nans)");
    EXPECT_EQ(rateLimited(1e20).description(),
              "rate limited (429, Retry-After 100000000000000000000s)");
}

} // namespace
} // namespace vellumor::usageFetchErrorTest
