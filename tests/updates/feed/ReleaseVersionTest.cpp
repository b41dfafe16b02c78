#include "updates/feed/ReleaseVersion.h"

#include <gtest/gtest.h>

#include <utility>

namespace vellumor::releaseVersionTest {
namespace {

TEST(ReleaseVersion, isThreeNumbersAndNothingElse)
{
    const std::pair<const char*, std::optional<ReleaseVersion>> rows[] = {
        {"0.0.0", ReleaseVersion{0, 0, 0}},
        {"1.2.3", ReleaseVersion{1, 2, 3}},
        {"10.0.205", ReleaseVersion{10, 0, 205}},
        {"999999.999999.999999", ReleaseVersion{999999, 999999, 999999}},
        {"", std::nullopt},
        {"1", std::nullopt},
        {"1.2", std::nullopt},
        {"1.2.", std::nullopt},
        {"1..3", std::nullopt},
        {".1.2.3", std::nullopt},
        {"1.2.3.4", std::nullopt},
        {"1.2.3-rc1", std::nullopt},
        {"1.2.3-0", std::nullopt},
        {"1.2.3+build", std::nullopt},
        {"1.2.3a", std::nullopt},
        {"v1.2.3", std::nullopt},
        {" 1.2.3", std::nullopt},
        {"1.2.3 ", std::nullopt},
        {"1.2.3\n", std::nullopt},
        {"01.2.3", std::nullopt},
        {"1.02.3", std::nullopt},
        {"1.2.00", std::nullopt},
        {"-1.2.3", std::nullopt},
        {"+1.2.3", std::nullopt},
        {"1.-2.3", std::nullopt},
        {"1000000.0.0", std::nullopt},
        {"1,2,3", std::nullopt},
        {"0x1.2.3", std::nullopt},
        {"1e1.2.3", std::nullopt},
    };
    for (const auto& [text, version] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(ReleaseVersion::parse(text), version);
        if (version) {
            EXPECT_EQ(version->text(), text);
        }
    }
}

TEST(ReleaseVersion, isOrderedByItsNumbersFromTheLeft)
{
    const char* const ordered[] = {"0.0.9", "0.1.0", "0.9.10", "0.10.9", "1.0.0",
                                   "1.0.1", "1.1.0", "2.0.0",  "10.0.0"};
    for (std::size_t i = 0; i < std::size(ordered); ++i) {
        for (std::size_t k = 0; k < std::size(ordered); ++k) {
            SCOPED_TRACE(std::string(ordered[i]) + " and " + ordered[k]);
            EXPECT_EQ(*ReleaseVersion::parse(ordered[i]) < *ReleaseVersion::parse(ordered[k]),
                      i < k);
        }
    }
}

} // namespace
} // namespace vellumor::releaseVersionTest
