#include "updates/feed/ReleaseFeed.h"

#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"
#include "updates/FeedTesting.h"

#include <gtest/gtest.h>

#include <ctime>
#include <stdexcept>

namespace vellumor::makeFeedTest {
namespace {

// The maker's tool, and what the program makes of its feeds. The tool signs with OpenSSL.
struct MakeFeedTest : testing::Test {
    test::TempFolder folder;
    std::string key = folder.file("maker.pem");

    std::string run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), VELLUMOR_MAKE_FEED);
        test::ChildProcess::Command command;
        command.arguments = std::move(arguments);
        command.environment = {{"PATH", "/usr/bin:/bin"}};
        command.outputFile = folder.file("output");
        std::string output = test::runToEnd(command);
        while (output.ends_with('\n'))
            output.pop_back();
        return output;
    }
    [[nodiscard]] ReleaseFeed::Key newKey()
    {
        return ReleaseFeed::parseKey(run({"--new-key", key})).value();
    }
};

TEST_F(MakeFeedTest, itsFeedIsReadWithThePublicKeyThatItPrints)
{
    const auto publicKey = newKey();
    const std::string feed =
        run({key, "1.10.2", "https://maker.example.org/vellumor?a=1", "--serial", "2026030102"});
    const auto decoded = ReleaseFeed::decode(feed, publicKey, test::website);
    ASSERT_TRUE(std::holds_alternative<ReleaseFeed>(decoded));
    const ReleaseFeed expected{2026030102, {1, 10, 2}, "https://maker.example.org/vellumor?a=1"};
    EXPECT_EQ(std::get<ReleaseFeed>(decoded), expected);
    EXPECT_EQ(ReleaseFeed::parseKey(run({"--public-key", key})), publicKey);
}

TEST_F(MakeFeedTest, theSerialIsTheDayUnlessToldOtherwise)
{
    const auto publicKey = newKey();
    const auto day = [] {
        const std::time_t now = std::time(nullptr);
        std::tm utc{};
        ::gmtime_r(&now, &utc);
        return ((utc.tm_year + 1900) * 100 + utc.tm_mon + 1) * 10000 + utc.tm_mday * 100 + 1;
    };
    const int before = day();
    const std::string feed = run({key, "1.2.3", "https://maker.example.org/"});
    const auto decoded = ReleaseFeed::decode(feed, publicKey, test::website);
    const int serial = std::get<ReleaseFeed>(decoded).serial;
    EXPECT_TRUE(before <= serial && serial <= day()) << serial;
}

TEST_F(MakeFeedTest, theKeyIsForItsOwnerAloneAndNeverReplaced)
{
    const auto publicKey = newKey();
    EXPECT_EQ(test::modeOf(key), 0600U);
    const std::string before = test::contentsOf(key);
    EXPECT_THROW(run({"--new-key", key}), std::runtime_error);
    EXPECT_EQ(test::contentsOf(key), before);
    EXPECT_EQ(ReleaseFeed::parseKey(run({"--public-key", key})), publicKey);
}

TEST_F(MakeFeedTest, whatNoProgramWouldTakeIsNotSigned)
{
    (void)newKey();
    const std::string page = "https://maker.example.org/";
    const std::vector<std::string> rows[] = {
        {key, "1.2.3-rc1", page},
        {key, "v1.2.3", page},
        {key, "1.2", page},
        {key, "01.2.3", page},
        {key, "1.2.3", "http://maker.example.org/"},
        {key, "1.2.3", "https://maker.example.org"},
        {key, "1.2.3", "https://user@maker.example.org/"},
        {key, "1.2.3", page + " x"},
        {key, "1.2.3", page, "--serial", "0"},
        {key, "1.2.3", page, "--serial", "2147483648"},
        {key, "1.2.3"},
        {folder.file("none.pem"), "1.2.3", page},
        {folder.put("other.pem", "no key"), "1.2.3", page},
    };
    for (const auto& row : rows)
        EXPECT_THROW(run(row), std::runtime_error) << row.at(1) << " " << row.back();
}

} // namespace
} // namespace vellumor::makeFeedTest
