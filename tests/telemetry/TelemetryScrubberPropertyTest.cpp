#include "base/SecureRandom.h"
#include "base/Sha256.h"
#include "telemetry/TelemetryScrubber.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

namespace vellumor::telemetryScrubberPropertyTest {
namespace {

constexpr int rounds = 20'000;

class Texts {
public:
    explicit Texts(unsigned seed)
        : m_random(seed)
    {
    }

    [[nodiscard]] std::size_t upTo(std::size_t most) { return m_random() % (most + 1); }
    [[nodiscard]] char of(std::string_view alphabet) { return alphabet[upTo(alphabet.size() - 1)]; }
    [[nodiscard]] std::string run(std::string_view alphabet, std::size_t length)
    {
        std::string text;
        while (text.size() < length)
            text += of(alphabet);
        return text;
    }
    // Whatever may stand around something: valid UTF-8 of all kinds.
    [[nodiscard]] std::string anything()
    {
        static const char* const pieces[] = {
            "a",    "Z",   "7",   "_",     "-",       ".",       "@",      "/",      "~",
            " ",    "\t",  "\n",  "\r\n",  ":",       "\"",      "\\",     "{",      "}",
            "%",    "é",   "—",   "中",    "🙂",    "e\u0301", "\u00a0", "\u2028", "\u202e",
            "home", "sk-", "eyJ", "Users", "http://", "=",       "|"};
        std::string text;
        for (std::size_t count = upTo(12); count > 0; --count)
            text += pieces[upTo(std::size(pieces) - 1)];
        return text;
    }
    // Stands around a word without becoming part of it.
    [[nodiscard]] std::string apart()
    {
        static const char* const edges[] = {"", " ", ".", "/", "-", "—", "\n", "🙂", "\"", "@"};
        return edges[upTo(std::size(edges) - 1)];
    }

private:
    std::mt19937 m_random;
};

constexpr std::string_view ofToken =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
constexpr std::string_view ofName = "abcXYZ019.+_-%";

TEST(TelemetryScrubberProperty, noAddressLeavesWhateverStandsAroundIt)
{
    Texts texts(1);
    for (int i = 0; i < rounds; ++i) {
        const std::string address = texts.run(ofName, 1 + texts.upTo(8)) + "@" +
                                    texts.run("abc019-", 1 + texts.upTo(8)) + "." +
                                    texts.run("abcxyz", 1 + texts.upTo(4));
        const std::string text = texts.anything() + address + texts.anything();
        ASSERT_TRUE(TelemetryScrubber::mustDrop(text)) << text;
    }
}

TEST(TelemetryScrubberProperty, noPathOfAPersonOrTheSystemLeavesWhateverStandsAroundIt)
{
    Texts texts(2);
    const char* const folders[] = {"/Users/", "/home/", "/var/", "/private/", "/tmp/"};
    for (int i = 0; i < rounds; ++i) {
        const std::string path = folders[texts.upTo(4)] + texts.run(ofName, texts.upTo(9));
        const std::string text = texts.anything() + path + texts.anything();
        ASSERT_TRUE(TelemetryScrubber::mustDrop(text)) << text;
        const char* const root = texts.upTo(1) == 0 ? "/" : "~/";
        ASSERT_TRUE(TelemetryScrubber::mustDrop(root + texts.anything()));
    }
}

TEST(TelemetryScrubberProperty, noUuidLeavesWhateverStandsAroundIt)
{
    Texts texts(3);
    for (int i = 0; i < rounds; ++i) {
        const std::string text = texts.anything() + SecureRandom::uuid() + texts.anything();
        ASSERT_TRUE(TelemetryScrubber::mustDrop(text)) << text;
    }
}

TEST(TelemetryScrubberProperty, noRunOfTokenCharactersLeavesWhateverStandsAroundIt)
{
    Texts texts(4);
    for (int i = 0; i < rounds; ++i) {
        const std::string token = texts.run(ofToken, 32 + texts.upTo(60));
        const std::string text = texts.anything() + token + texts.anything();
        ASSERT_TRUE(TelemetryScrubber::mustDrop(text)) << text;
    }
}

TEST(TelemetryScrubberProperty, noSuppressedWordLeavesWhateverStandsAroundIt)
{
    Texts texts(5);
    for (int i = 0; i < rounds; ++i) {
        const std::string word = texts.run("abc_019", 1 + texts.upTo(20));
        const std::string digest = Sha256::hex(word);
        const std::string_view digests[] = {digest};
        std::string before = texts.anything();
        std::string after = texts.anything();
        before += before.empty() ? "" : " "; // else it may be the end of another word
        after = after.empty() ? "" : " " + after;
        const std::string text = before + texts.apart() + word + texts.apart() + after;
        ASSERT_TRUE(TelemetryScrubber::mustDrop(text, digests)) << text;
    }
}

// The same tests as regular expressions, by a library that is too slow and greedy for the program.
TEST(TelemetryScrubberProperty, agreesWithTheRegularExpressions)
{
    const std::regex address(R"([^@\s]+@[^@\s]+\.[^@\s]+)");
    const std::regex folder("/(Users|home|var|private|tmp)/");
    const std::regex uuid("^[0-9a-fA-F]{8}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-"
                          "[0-9a-fA-F]{12}$");
    const std::regex run(R"([A-Za-z0-9_\-]{32,})");
    Texts texts(6);
    int hits = 0;
    for (int i = 0; i < rounds; ++i) {
        std::string text = texts.run("aaabb@@... \t", texts.upTo(16));
        hits += std::regex_search(text, address) ? 1 : 0;
        ASSERT_EQ(TelemetryScrubber::holdsAddress(text), std::regex_search(text, address)) << text;

        text = "x";
        for (std::size_t count = texts.upTo(4); count > 0; --count) {
            static const char* const parts[] = {"/", "Users", "home", "var", "private", "tmp", "a"};
            text += parts[texts.upTo(6)];
        }
        ASSERT_EQ(TelemetryScrubber::looksLikeAbsolutePath(text), std::regex_search(text, folder))
            << text;

        text = "123e4567-e89b-12d3-a456-426614174000";
        text[texts.upTo(35)] = texts.of("0fFgG-");
        ASSERT_EQ(TelemetryScrubber::isUuid(text), std::regex_match(text, uuid)) << text;

        text = "." + texts.run("azAZ09_-", 28 + texts.upTo(8));
        text[1 + texts.upTo(27)] = texts.of("a_-. /");
        ASSERT_EQ(TelemetryScrubber::looksLikeSecret(text), std::regex_search(text, run)) << text;
    }
    EXPECT_GT(hits, rounds / 20); // enough of both kinds
}

TEST(TelemetryScrubberProperty, whatIsKeptIsUnchangedAndKeptAgain)
{
    Texts texts(7);
    int kept = 0;
    for (int i = 0; i < rounds; ++i) {
        const TelemetryProperties properties = {{"a", texts.anything()}, {"b", texts.anything()}};
        const TelemetryProperties once = TelemetryScrubber::scrub(properties);
        for (const auto& [key, value] : once)
            ASSERT_EQ(value, properties.at(key));
        ASSERT_EQ(TelemetryScrubber::scrub(once), once);
        kept += static_cast<int>(once.size());
    }
    EXPECT_GT(kept, rounds / 4);
}

} // namespace
} // namespace vellumor::telemetryScrubberPropertyTest
