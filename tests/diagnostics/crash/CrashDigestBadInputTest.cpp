#include "diagnostics/crash/CrashDigest.h"

#include "base/Sha256.h"
#include "diagnostics/crash/Reports.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace vellumor::crashDigestBadInputTest {
namespace {

using test::bodyWith;
using test::frame;

std::optional<CrashDigest> digestOf(const Json& body, const Json& header = test::header("one"))
{
    return CrashDigest::make(header, body, "");
}

std::string withoutOwnFrames(const std::string& image)
{
    return Sha256::first8Hex("no-own-frames|" + image);
}

TEST(CrashDigest, aBodyWithoutAnExceptionIsNoCrash)
{
    Json body = bodyWith({});
    for (const Json& exception : {Json(nullptr), Json("SIGSEGV"), Json::array(), Json(1)}) {
        body["exception"] = exception;
        EXPECT_EQ(digestOf(body), std::nullopt);
    }
    body.erase("exception");
    EXPECT_EQ(digestOf(body), std::nullopt);
}

TEST(CrashDigest, anIndexThatPointsNowhereMeansThatThereAreNoFrames)
{
    const Json indices[] = {-1,
                            2,
                            1000000000,
                            std::numeric_limits<std::int64_t>::max(),
                            std::numeric_limits<std::int64_t>::min(),
                            std::numeric_limits<std::uint64_t>::max(),
                            1e300,
                            0.5,
                            "1",
                            true,
                            nullptr,
                            Json::array()};
    for (const Json& index : indices) {
        SCOPED_TRACE(index.dump());
        Json thread = bodyWith({frame("Poller")});
        thread["faultingThread"] = index;
        EXPECT_EQ(digestOf(thread)->signature, withoutOwnFrames("unknown"));
        Json image = frame("Poller");
        image["imageIndex"] = index;
        EXPECT_EQ(digestOf(bodyWith({image}))->signature, withoutOwnFrames("unknown"));
        EXPECT_EQ(digestOf(bodyWith({image, frame("b")}))->signature, Sha256::first8Hex("b"));
    }
}

TEST(CrashDigest, missingOrMisshapenPartsCountAsNotThere)
{
    for (const char* part : {"threads", "usedImages", "faultingThread"}) {
        for (const Json& shape :
             {Json(nullptr), Json("x"), Json(1), Json::object(), Json::array({nullptr, 1})}) {
            SCOPED_TRACE(part + shape.dump());
            Json body = bodyWith({frame("Poller")});
            body[part] = shape;
            if (std::string(part) == "faultingThread" && shape == 1)
                continue; // that is how it should be
            EXPECT_EQ(digestOf(body)->signature, withoutOwnFrames("unknown"));
        }
        Json body = bodyWith({frame("Poller")});
        body.erase(part);
        EXPECT_EQ(digestOf(body)->signature, withoutOwnFrames("unknown"));
    }
}

TEST(CrashDigest, framesOfAWrongShapeArePassedOver)
{
    const std::vector<Json> frames = {Json(1),       Json("Poller"), Json(nullptr),
                                      Json::array(), Json::object(), frame("a")};
    EXPECT_EQ(digestOf(bodyWith(frames))->signature, Sha256::first8Hex("a"));
    Json body = bodyWith({});
    for (const Json& thread : {Json(1), Json::array(), Json{{"frames", 1}}, Json{{"frames", "a"}},
                               Json{{"frames", {{"a", 1}}}}}) {
        body["threads"][1] = thread;
        EXPECT_EQ(digestOf(body)->signature, withoutOwnFrames("unknown")) << thread;
    }
}

TEST(CrashDigest, aSymbolThatIsNoTextCountsAsNone)
{
    Json odd = frame("x");
    odd["symbol"] = 7;
    EXPECT_EQ(digestOf(bodyWith({odd}))->signature, Sha256::first8Hex("<unsymbolicated>"));
}

TEST(CrashDigest, aHeaderOfAWrongShapeTellsNothing)
{
    for (const Json& header : {Json(1), Json::array(), Json(nullptr), Json("x")}) {
        const auto digest = digestOf(bodyWith({}), header);
        EXPECT_EQ(digest->incidentID, "");
        EXPECT_EQ(digest->crashedVersion, "unknown");
    }
}

TEST(CrashDigest, aBrokenDateIsNoDate)
{
    const Json dates[] = {"",
                          "yesterday",
                          "2026-03-01T09:30:00Z",
                          "2026-03-01 09:30:00 +0000",
                          "2026-03-01 09:30:00.000 +0000",
                          "2026-03-01 09:30:00.00000 +0000",
                          "2026-03-01 09:30:00.0000 +00:00",
                          "2026-03-01 09:30:00.0000 Z",
                          "2026-03-01 09:30:00.0000 UTC+0",
                          "2026-03-01 09:30:00.0000  0000",
                          "2026-02-30 09:30:00.0000 +0000",
                          "2026-13-01 09:30:00.0000 +0000",
                          "0000-03-01 09:30:00.0000 +0000",
                          "2026-03-01 24:00:00.0000 +0000",
                          "2026-03-01 09:30:60.0000 +0000",
                          "2026-03-01 09:30:00.0000 +2400",
                          "2026-03-01 09:30:00.00x0 +0000",
                          "2026-03-01 09:30:00.+000 +0000",
                          "2026-03-01 09:30:00.0 00 +0000",
                          "2026-03-01T09:30:00.0000 +0000",
                          "2026-03-01 09:30:00,0000 +0000",
                          "2026-03-01 09:30:00.0000T+0000",
                          1772357400,
                          nullptr};
    for (const Json& date : dates) {
        SCOPED_TRACE(date.dump());
        Json body = bodyWith({});
        body["captureTime"] = date;
        EXPECT_EQ(digestOf(body)->crashedAt, std::nullopt);
        EXPECT_EQ(digestOf(body)->uptime, "unknown");
        body = bodyWith({});
        body["procLaunch"] = date;
        EXPECT_NE(digestOf(body)->crashedAt, std::nullopt);
        EXPECT_EQ(digestOf(body)->uptime, "unknown");
    }
}

// Work that grew with the square of a frame's length would take minutes here.
TEST(CrashDigest, hugeFramesTakeTimeInProportionToTheirLength)
{
    constexpr int count = 300000;
    std::string prefixes;
    std::string numbers(4'000'000, '7');
    std::string signs(4'000'000, '#');
    for (int i = 0; i < count; ++i)
        prefixes += "specialized ";
    EXPECT_EQ(CrashDigest::normalize(prefixes + "foo"), "foo");
    EXPECT_EQ(CrashDigest::normalize("#" + numbers), "#N");
    EXPECT_EQ(CrashDigest::normalize("x" + numbers).size(), numbers.size() + 1);
    EXPECT_EQ(CrashDigest::normalize(signs).size(), signs.size());
    EXPECT_EQ(digestOf(bodyWith({frame(numbers + "Poller")}))->area, "poller");
}

} // namespace
} // namespace vellumor::crashDigestBadInputTest
