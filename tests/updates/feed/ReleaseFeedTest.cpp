#include "updates/feed/ReleaseFeed.h"

#include "updates/FeedTesting.h"

#include <gtest/gtest.h>

namespace vellumor::releaseFeedTest {
namespace {

using Problem = ReleaseFeed::Problem;
using test::Maker;
using test::release;
using test::toBase64;
using test::website;

const Maker maker;

std::optional<Problem> problemOf(const std::string& bytes, const Maker& of = maker)
{
    const auto decoded = ReleaseFeed::decode(bytes, of.key(), website);
    const auto* problem = std::get_if<Problem>(&decoded);
    return problem == nullptr ? std::nullopt : std::optional(*problem);
}

std::string feedWith(const std::string& releaseText, const std::string& signature)
{
    return R"({"schemaVersion":1,"release":")" + releaseText + R"(","signature":")" + signature +
           R"("})";
}

TEST(ReleaseFeed, aSignedReleaseIsWhatItSays)
{
    const auto decoded =
        ReleaseFeed::decode(maker.feedOf(release("1.10.2", 7)), maker.key(), website);
    ASSERT_TRUE(std::holds_alternative<ReleaseFeed>(decoded));
    const ReleaseFeed expected{7, {1, 10, 2}, "https://maker.example.org/vellumor"};
    EXPECT_EQ(std::get<ReleaseFeed>(decoded), expected);
}

TEST(ReleaseFeed, keysThatItDoesNotKnowAreNoHindrance)
{
    std::string text = release("1.2.3", 1);
    text.insert(1, R"("notes": ["new"], )");
    std::string feed = maker.feedOf(text);
    feed.insert(1, R"("more": {}, )");
    EXPECT_EQ(problemOf(feed), std::nullopt);
}

TEST(ReleaseFeed, anotherMakersSignatureIsNone)
{
    const std::string feed = Maker(2).feedOf(release("1.2.3", 1));
    EXPECT_EQ(problemOf(feed, Maker(2)), std::nullopt);
    EXPECT_EQ(problemOf(feed), Problem::badSignature);
}

TEST(ReleaseFeed, anyBitOfTheReleaseOrOfTheSignatureThatIsTurnedSpoilsIt)
{
    const std::string text = release("1.2.3", 1);
    const std::string signature = maker.signatureOf(text);
    ASSERT_EQ(problemOf(feedWith(toBase64(text), toBase64(signature))), std::nullopt);
    for (std::size_t bit = 0; bit < 8 * text.size(); ++bit) {
        std::string turned = text;
        turned[bit / 8] = static_cast<char>(turned[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(problemOf(feedWith(toBase64(turned), toBase64(signature))),
                  Problem::badSignature);
    }
    for (std::size_t bit = 0; bit < 8 * signature.size(); ++bit) {
        std::string turned = signature;
        turned[bit / 8] = static_cast<char>(turned[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(problemOf(feedWith(toBase64(text), toBase64(turned))), Problem::badSignature);
    }
}

TEST(ReleaseFeed, aReleaseThatIsCutOrLengthenedIsNotTheSignedOne)
{
    const std::string text = release("1.2.3", 1);
    const std::string signature = toBase64(maker.signatureOf(text));
    for (std::size_t size = 0; size < text.size(); ++size)
        EXPECT_EQ(problemOf(feedWith(toBase64(text.substr(0, size)), signature)),
                  Problem::badSignature);
    EXPECT_EQ(problemOf(feedWith(toBase64(text + " "), signature)), Problem::badSignature);
}

TEST(ReleaseFeed, aFeedCutAnywhereIsNoFeed)
{
    const std::string feed = maker.feedOf(release("1.2.3", 1));
    for (std::size_t size = 0; size < feed.size(); ++size)
        EXPECT_EQ(problemOf(feed.substr(0, size)), Problem::malformed) << size;
}

TEST(ReleaseFeed, whatIsNotOfItsFormIsNoFeed)
{
    const std::string text = toBase64(release("1.2.3", 1));
    const std::string signature = toBase64(maker.signatureOf(release("1.2.3", 1)));
    const std::string rows[] = {
        "",
        "null",
        "[]",
        "<html></html>",
        release("1.2.3", 1),
        R"({"schemaVersion":2,"release":")" + text + R"(","signature":")" + signature + "\"}",
        R"({"schemaVersion":"1","release":")" + text + R"(","signature":")" + signature + "\"}",
        R"({"release":")" + text + R"(","signature":")" + signature + "\"}",
        R"({"schemaVersion":1,"signature":")" + signature + "\"}",
        R"({"schemaVersion":1,"release":")" + text + "\"}",
        R"({"schemaVersion":1,"release":null,"signature":")" + signature + "\"}",
        R"({"schemaVersion":1,"release":{},"signature":")" + signature + "\"}",
        feedWith(text, ""),
        feedWith(text, signature.substr(0, 84)), // too short
        feedWith(text, signature.substr(0, 87)), // no padding
        feedWith(text, signature + "AAAA"),      // too long
        feedWith(text, " " + signature),         // no base64
        feedWith(text, signature + "\\n"),
        feedWith("*" + text, signature),
        feedWith(text + "=", signature),
        feedWith(text, signature) + "x",
        std::string(70, '[') + std::string(70, ']'),
    };
    for (const std::string& row : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(problemOf(row), Problem::malformed);
    }
}

TEST(ReleaseFeed, mayHaveSixteenKibibytesAndNotAByteMore)
{
    std::string feed = maker.feedOf(release("1.2.3", 1));
    feed.append(16 * 1024 - feed.size(), ' ');
    EXPECT_EQ(problemOf(feed), std::nullopt);
    EXPECT_EQ(problemOf(feed + " "), Problem::tooLarge);
}

TEST(ReleaseFeed, whatIsSignedAndNoReleaseForThisProgramIsNotUsed)
{
    const std::string page = R"("page":"https://maker.example.org/a")";
    const std::string good = R"("schemaVersion":1,"product":"dev.quorle.vellumor",)";
    const std::pair<std::string, Problem> rows[] = {
        {"", Problem::badRelease},
        {"[]", Problem::badRelease},
        {"{}", Problem::badRelease},
        {"{" + good + R"("version":"1.2.3",)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":0,"version":"1.2.3",)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":-1,"version":"1.2.3",)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":1.5,"version":"1.2.3",)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":"1","version":"1.2.3",)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":2147483648,"version":"1.2.3",)" + page + "}",
         Problem::badRelease},
        {"{" + good + R"("serial":1,)" + page + "}", Problem::badRelease},
        {"{" + good + R"("serial":1,"version":1.2,)" + page + "}", Problem::badRelease},
        {release("1.2.3-rc1", 1), Problem::badRelease},
        {release("v1.2.3", 1), Problem::badRelease},
        {"{" + good + R"("serial":1,"version":"1.2.3"})", Problem::badRelease},
        {R"({"schemaVersion":0,"product":"dev.quorle.vellumor","serial":1,"version":"1.2.3",)" +
             page + "}",
         Problem::badRelease},
        {R"({"schemaVersion":2})", Problem::newerSchema},
        {R"({"schemaVersion":1,"product":"dev.quorle.other","serial":1,"version":"1.2.3",)" + page +
             "}",
         Problem::otherProduct},
        {release("1.2.3", 1, "https://elsewhere.example.org/vellumor"), Problem::badPage},
    };
    for (const auto& [text, problem] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(problemOf(maker.feedOf(text)), problem);
    }
}

TEST(ReleaseFeed, thePageLiesOnTheMakersHostAndNowhereElse)
{
    struct Row {
        const char* site;
        const char* page;
        bool isIts;
    };
    const Row rows[] = {
        {"https://quorle.dev", "https://quorle.dev/", true},
        {"https://quorle.dev", "https://quorle.dev/vellumor/1.2.3?a=b&c=%20#new", true},
        {"https://quorle.dev/", "https://quorle.dev/x", true},
        {"https://quorle.dev/sub/site", "https://quorle.dev/x", true},
        {"https://quorle.dev:8443", "https://quorle.dev:8443/x", true},
        {"https://quorle.dev", "https://quorle.dev", false},
        {"https://quorle.dev", "http://quorle.dev/x", false},
        {"https://quorle.dev", "https://quorle.dev:8443/x", false},
        {"https://quorle.dev", "https://quorle.dev.example.org/x", false},
        {"https://quorle.dev", "https://quorle.dev@example.org/x", false},
        {"https://quorle.dev", "https://example.org/https://quorle.dev/", false},
        {"https://quorle.dev", "https://www.quorle.dev/x", false},
        {"https://quorle.dev", "https://quorle.dev\\@example.org/x", false},
        {"https://quorle.dev", "https://quorle.dev/\n", false},
        {"https://quorle.dev", "https://quorle.dev/a b", false},
        {"https://quorle.dev", "https://quorle.dev/a\"b", false},
        {"https://quorle.dev", "https://quorle.dev/\\", false},
        {"https://quorle.dev", "https://quorle.dev/\xc3\xa9", false},
        {"https://quorle.dev", "https://quorle.dev/a;b", false},
        {"https://quorle.dev", "https://quorle.dev/$(id)", false},
        {"https://quorle.dev", "javascript:alert(1)", false},
        {"https://quorle.dev", "file:///etc/passwd", false},
        {"https://quorle.dev", "", false},
        {"http://quorle.dev", "http://quorle.dev/x", false},
        {"http://quorle.dev", "https://quorle.dev/x", false},
        {"https://", "https:///x", false},
        {"https:///", "https:///x", false},
        {"", "https://quorle.dev/x", false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ReleaseFeed::isPageOf(row.site, row.page), row.isIts)
            << row.site << " " << row.page;
}

TEST(ReleaseFeed, aKeyIsThirtyTwoBytesInBase64)
{
    EXPECT_EQ(ReleaseFeed::parseKey(maker.keyText()), maker.key());
    for (const std::string& text :
         {std::string(), std::string("AAAA"), maker.keyText() + "AAAA", maker.keyText() + "=",
          maker.keyText().substr(0, 43), " " + maker.keyText(), std::string(44, '*')})
        EXPECT_EQ(ReleaseFeed::parseKey(text), std::nullopt) << text;
}

// With such a key anybody could sign.
TEST(ReleaseFeed, aKeyOfSmallOrderVouchesForNothing)
{
    const ReleaseFeed::Key zero{};
    const std::string text = release("1.2.3", 1);
    for (const std::string& signature : {std::string(64, '\0'), "\x01" + std::string(63, '\0')}) {
        const auto decoded =
            ReleaseFeed::decode(feedWith(toBase64(text), toBase64(signature)), zero, website);
        EXPECT_EQ(std::get<Problem>(decoded), Problem::badSignature);
    }
}

} // namespace
} // namespace vellumor::releaseFeedTest
