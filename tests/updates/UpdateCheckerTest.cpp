#include "updates/UpdateChecker.h"

#include "support/FakeClock.h"
#include "support/TempFolder.h"
#include "updates/FakeTransport.h"
#include "updates/FeedTesting.h"

#include <QCoroCore>

#include <gtest/gtest.h>

namespace vellumor::updateCheckerTest {
namespace {

using test::answered;
using test::release;
using Kind = UpdateFailure::Kind;

struct UpdateCheckerTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.file("updates.json");
    UpdateStore store{files, path, runAtOnce};
    test::FakeTransport transport;
    test::FakeClock clock;
    test::Maker maker;
    UpdateChecker::Settings settings{"https://maker.example.org/feed.json", maker.keyText(),
                                     std::string(test::website), "1.2.3"};

    UpdateResult check()
    {
        UpdateChecker checker(transport, store, clock, settings);
        return QCoro::waitFor(checker.check());
    }
    UpdateResult checkFeed(const std::string& feed)
    {
        transport.answer = answered(200, feed);
        return check();
    }
    UpdateResult checkRelease(const std::string& version, int serial)
    {
        return checkFeed(maker.feedOf(release(version, serial)));
    }
};

UpdateResult failure(Kind kind)
{
    return UpdateFailure{kind, 0, ""};
}

TEST_F(UpdateCheckerTest, asksTheFeedOnceWithoutAnyToken)
{
    checkRelease("1.2.3", 1);
    EXPECT_EQ(transport.urls, std::vector<std::string>{"https://maker.example.org/feed.json"});
    EXPECT_EQ(transport.bearers, std::vector<std::string>{""});
}

TEST_F(UpdateCheckerTest, onlyANewerReleaseIsOffered)
{
    const UpdateResult upToDate = UpToDate();
    const auto available = [](const char* version) {
        return UpdateResult(UpdateAvailable{version, "https://maker.example.org/vellumor"});
    };
    const std::pair<const char*, UpdateResult> rows[] = {
        {"1.2.4", available("1.2.4")},
        {"1.3.0", available("1.3.0")},
        {"2.0.0", available("2.0.0")},
        {"1.10.0", available("1.10.0")},
        {"1.2.10", available("1.2.10")},
        {"1.2.3", upToDate},
        {"1.2.2", upToDate},
        {"1.1.9", upToDate},
        {"0.9.9", upToDate},
        {"1.2.4-rc1", failure(Kind::unusable)},
    };
    int serial = 0;
    for (const auto& [version, result] : rows) {
        SCOPED_TRACE(version);
        EXPECT_EQ(checkRelease(version, ++serial), result);
    }
}

TEST_F(UpdateCheckerTest, whatIsNotTheMakersIsAFailure)
{
    EXPECT_EQ(checkFeed(test::Maker(2).feedOf(release("9.0.0", 1))), failure(Kind::badSignature));
    EXPECT_EQ(checkFeed("<html>"), failure(Kind::malformed));
    EXPECT_EQ(checkFeed(""), failure(Kind::malformed));
    EXPECT_EQ(checkFeed(std::string(16 * 1024 + 1, ' ')), failure(Kind::tooLarge));
    EXPECT_EQ(checkFeed(maker.feedOf(release("9.0.0", 1, "https://example.org/"))),
              failure(Kind::unusable));
    EXPECT_EQ(store.current().serial, 0);
}

TEST_F(UpdateCheckerTest, anyOtherAnswerIsAFailureWhateverItHolds)
{
    const std::string feed = maker.feedOf(release("9.0.0", 1));
    for (const int status : {201, 204, 206, 400, 403, 404, 429, 500, 503}) {
        transport.answer = answered(status, feed);
        EXPECT_EQ(check(), UpdateResult(UpdateFailure{Kind::http, status, ""})) << status;
    }
    for (const int status : {300, 301, 302, 303, 304, 307, 308, 399}) {
        transport.answer = answered(status, feed);
        EXPECT_EQ(check(), failure(Kind::redirected)) << status;
    }
    transport.answer = {HttpAnswer::Kind::tooLarge, 200, "", std::nullopt, ""};
    EXPECT_EQ(check(), failure(Kind::tooLarge));
    transport.answer = {HttpAnswer::Kind::transport, -1, feed, std::nullopt, "Host not found"};
    EXPECT_EQ(check(), UpdateResult(UpdateFailure{Kind::transport, 0, "Host not found"}));
}

TEST_F(UpdateCheckerTest, aFeedOlderThanOneSeenBeforeIsRefusedAndTheSameIsNot)
{
    EXPECT_TRUE(std::holds_alternative<UpdateAvailable>(checkRelease("1.2.5", 7)));
    EXPECT_EQ(checkRelease("1.2.4", 6), failure(Kind::replayed));
    EXPECT_EQ(checkRelease("9.0.0", 1), failure(Kind::replayed));
    EXPECT_TRUE(std::holds_alternative<UpdateAvailable>(checkRelease("1.2.5", 7)));
    EXPECT_TRUE(std::holds_alternative<UpdateAvailable>(checkRelease("1.2.6", 8)));
    EXPECT_EQ(store.current().serial, 8);
}

TEST_F(UpdateCheckerTest, aFeedThatTakesAReleaseBackCountsAsSeenToo)
{
    checkRelease("1.2.5", 7);
    EXPECT_EQ(checkRelease("1.2.3", 8), UpdateResult(UpToDate()));
    EXPECT_EQ(checkRelease("1.2.5", 7), failure(Kind::replayed));
}

TEST_F(UpdateCheckerTest, whatWasSeenIsRememberedBeyondTheRun)
{
    checkRelease("1.2.5", 7);
    UpdateStore next(files, path, runAtOnce);
    EXPECT_EQ(next.current().serial, 7);
    UpdateChecker checker(transport, next, clock, settings);
    transport.answer = answered(200, maker.feedOf(release("1.2.4", 6)));
    EXPECT_EQ(QCoro::waitFor(checker.check()), failure(Kind::replayed));
}

TEST_F(UpdateCheckerTest, everyAnswerIsNotedAndNoAnswerIsNot)
{
    checkRelease("1.2.3", 1);
    EXPECT_EQ(store.current().checkedAt, clock.now());
    clock.advance(std::chrono::hours(1));
    transport.answer = answered(500);
    check();
    EXPECT_EQ(store.current().checkedAt, clock.now());
    const auto noted = clock.now();
    clock.advance(std::chrono::hours(1));
    transport.answer = {};
    check();
    EXPECT_EQ(store.current().checkedAt, noted);
}

TEST_F(UpdateCheckerTest, theUsersWishIsLeftAsItIs)
{
    store.save({false, 0, std::nullopt});
    checkRelease("1.2.5", 7);
    EXPECT_FALSE(store.current().automatic);
}

TEST_F(UpdateCheckerTest, withoutAFeedOrAKeyNothingIsEverAsked)
{
    transport.answer = answered(200, maker.feedOf(release("9.0.0", 1)));
    const auto good = settings;
    EXPECT_TRUE(UpdateChecker(transport, store, clock, good).isConfigured());
    std::vector<UpdateChecker::Settings> rows(7, good);
    rows[0].feed = "";
    rows[1].feed = "http://maker.example.org/feed.json";
    rows[2].key = "";
    rows[3].key = "not a key";
    rows[4] = {"", "", std::string(test::website), "1.2.3"}; // as it is built by default
    rows[5].version = "1.2";
    rows[6].feed = "file:///feed.json";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.feed + " " + row.key + " " + row.version);
        settings = row;
        EXPECT_FALSE(UpdateChecker(transport, store, clock, row).isConfigured());
        EXPECT_EQ(check(), UpdateResult(UpdatesNotConfigured()));
    }
    EXPECT_TRUE(transport.urls.empty());
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST_F(UpdateCheckerTest, aCheckerThatGoesMeanwhileTouchesNothing)
{
    transport.isHeld = true;
    transport.answer = answered(200, maker.feedOf(release("9.0.0", 1)));
    auto checker = std::make_unique<UpdateChecker>(transport, store, clock, settings);
    const Task<UpdateResult> task = checker->check();
    checker.reset();
    transport.letGo();
    EXPECT_TRUE(task.isReady());
    EXPECT_EQ(store.current(), UpdateState());
}

TEST_F(UpdateCheckerTest, ofTwoChecksAtOnceEachIsAnsweredByItsOwnFeed)
{
    transport.isHeld = true;
    UpdateChecker checker(transport, store, clock, settings);
    const Task<UpdateResult> one = checker.check();
    const Task<UpdateResult> two = checker.check();
    transport.answer = answered(200, maker.feedOf(release("1.2.5", 7)));
    transport.letGo();
    EXPECT_TRUE(one.isReady() && two.isReady());
    EXPECT_EQ(transport.urls.size(), 2U);
    EXPECT_EQ(store.current().serial, 7);
}

} // namespace
} // namespace vellumor::updateCheckerTest
