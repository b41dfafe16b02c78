#include "telemetry/TelemetryScrubber.h"

#include "base/Sha256.h"

#include <gtest/gtest.h>

namespace vellumor::telemetryScrubberTest {
namespace {

using Row = std::pair<std::string, bool>;

void expectRows(bool (*test)(std::string_view), std::initializer_list<Row> rows)
{
    for (const auto& [value, expected] : rows)
        EXPECT_EQ(test(value), expected) << value;
}

std::string times(std::size_t count, char c)
{
    return std::string(count, c);
}

TEST(TelemetryScrubber, anAddressIsANameAnAtSignAndADomainWithAFullStop)
{
    expectRows(TelemetryScrubber::holdsAddress, {{"me@example.org", true},
                                                 {"me@example", false},
                                                 {"me@example.", false},
                                                 {"me@.org", false},
                                                 {"me@..org", true},
                                                 {"me@e.o", true},
                                                 {"@example.org", false},
                                                 {" @example.org", false},
                                                 {"me @example.org", false},
                                                 {"me@ example.org", false},
                                                 {"me@example .org", false},
                                                 {"me@@example.org", false},
                                                 {"me@here@example.org", true},
                                                 {"x me@example.org y", true},
                                                 {"<me@example.org>", true},
                                                 {"a@b\tc@d.e", true},
                                                 {"a@b.\nc", false},
                                                 {"usage_401", false},
                                                 {"@", false},
                                                 {"@@", false},
                                                 {"a@", false},
                                                 {"", false}});
}

TEST(TelemetryScrubber, aPathBeginsAtTheRootOrAtHomeOrNamesAFolderOfPeople)
{
    expectRows(TelemetryScrubber::looksLikeAbsolutePath, {{"/", true},
                                                          {"/etc", true},
                                                          {"~/x", true},
                                                          {"~", false},
                                                          {"~me/x", false},
                                                          {" /etc", false},
                                                          {"x/Users/me", true},
                                                          {"file:///home/me", true},
                                                          {"in /home/", true},
                                                          {"in /home", false},
                                                          {"x/var/log", true},
                                                          {"x/private/y", true},
                                                          {"x/tmp/y", true},
                                                          {"x/users/me", false},
                                                          {"Users/me", false},
                                                          {"x/opt/y", false},
                                                          {"and/or", false},
                                                          {"", false}});
}

TEST(TelemetryScrubber, aUuidIsDroppedInUpperAndLowerCase)
{
    const std::string uuid = "123e4567-e89b-12d3-a456-426614174000";
    expectRows(TelemetryScrubber::isUuid, {{uuid, true},
                                           {"123E4567-E89B-12D3-A456-426614174000", true},
                                           {"x" + uuid, false},
                                           {uuid + " ", false},
                                           {uuid.substr(1), false},
                                           {"123g4567-e89b-12d3-a456-426614174000", false},
                                           {"123e4567ae89b-12d3-a456-426614174000", false},
                                           {"123e456-7e89b-12d3-a456-426614174000", false},
                                           {"", false}});
    EXPECT_TRUE(TelemetryScrubber::mustDrop(uuid));
    EXPECT_TRUE(TelemetryScrubber::mustDrop("a " + uuid + " b")); // a run of token characters
}

TEST(TelemetryScrubber, aSecretBeginsAsTokensDoOrIsALongRun)
{
    expectRows(TelemetryScrubber::looksLikeSecret,
               {{"sk-x", true},
                {"SK-x", true},
                {"sk", false},
                {"task-x", false},
                {" sk-x", false},
                {"Bearer x", true},
                {"bEaReR ", true},
                {"bearer", false},
                {"bearerx", false},
                {"forbearer x", false},
                {times(31, 'a'), false},
                {times(32, 'a'), true},
                {"x " + times(32, 'Z') + " y", true},
                {times(16, '_') + times(16, '-'), true},
                {times(31, '0') + " " + times(31, '0'), false},
                {times(31, '0') + "." + times(31, '0'), false},
                {times(31, '0') + "\xc3\xa4" + times(31, '0'), false},
                {"ey", false},
                {"ey" + times(29, 'a'), false},
                {"ey " + times(18, 'a') + "." + times(18, 'a'), false}, // 40 characters
                {"ey " + times(19, 'a') + "." + times(18, 'a'), true},  // 41 characters
                {"EY " + times(19, 'a') + "." + times(18, 'a'), true},
                {"hey " + times(19, 'a') + "." + times(18, 'a'), false},
                {"", false}});
}

TEST(TelemetryScrubber, charactersAreCountedAndNotBytes)
{
    std::string umlauts;
    for (int i = 0; i < 38; ++i)
        umlauts += "\xc3\xa4";
    EXPECT_FALSE(TelemetryScrubber::looksLikeSecret("ey" + umlauts));             // 40
    EXPECT_TRUE(TelemetryScrubber::looksLikeSecret("ey" + umlauts + "\xc3\xa4")); // 41
}

TEST(TelemetryScrubber, aSuppressedWordIsFoundWholeTrimmedOrAmongOthers)
{
    const std::string plain = Sha256::hex("secret_word");
    const std::string phrase = Sha256::hex("two words");
    const std::string foreign = Sha256::hex("geheim_\xc3\xa4");
    const std::string_view digests[] = {plain, phrase, foreign};
    const Row rows[] = {{"secret_word", true},
                        {" \n secret_word\t", true},
                        {"a secret_word b", true},
                        {"a.secret_word", true},
                        {"secret_word-7", true},
                        {"\"secret_word\"", true},
                        {"\xe2\x80\x94secret_word\xe2\x80\x94", true}, // between dashes
                        {"secret_word\xff", true},
                        {"secret_words", false},
                        {"asecret_word", false},
                        {"_secret_word", false},
                        {"secret_word1", false},
                        {"\xc3\xa4secret_word", false},
                        {"Secret_word", false},
                        {"secret word", false},
                        {"two words", true},
                        {" two words ", true},
                        {"the two words", false}, // a phrase is no word
                        {"x geheim_\xc3\xa4 y", true},
                        {"", false},
                        {" ", false}};
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(TelemetryScrubber::forwardsCodename(value, digests), expected) << value;
        EXPECT_EQ(TelemetryScrubber::mustDrop(value, digests), expected || value.ends_with("\xff"))
            << value;
    }
    EXPECT_FALSE(TelemetryScrubber::forwardsCodename("secret_word", {}));
    EXPECT_FALSE(TelemetryScrubber::forwardsCodename("secret_word"));
}

TEST(TelemetryScrubber, anEmptyValueIsNotSuppressedUnlessTheListSaysSo)
{
    const std::string nothing = Sha256::hex("");
    const std::string_view digests[] = {nothing};
    EXPECT_TRUE(TelemetryScrubber::forwardsCodename("", digests));
    EXPECT_FALSE(TelemetryScrubber::forwardsCodename("a  b", digests)); // no word is empty
}

TEST(TelemetryScrubber, whatTheProgramTellsStays)
{
    for (const char* value : {"usage_401",
                              "endpoint",
                              "vellumor",
                              "1.0.0",
                              "debian 12",
                              "opensuse-leap 15.5",
                              "prod",
                              "dev",
                              "20+",
                              "3-4",
                              "8+",
                              "EXC_BAD_ACCESS",
                              "SIGSEGV",
                              "older",
                              "none",
                              "7f83b165",
                              "keychain_read_fail",
                              "yes",
                              "no",
                              "?",
                              ""}) {
        EXPECT_FALSE(TelemetryScrubber::mustDrop(value)) << value;
    }
}

TEST(TelemetryScrubber, bytesThatAreNotUtf8CouldNotBeSent)
{
    for (const char* value : {"\xff", "a\xc3", "\xed\xa0\x80", "\xc0\xaf"})
        EXPECT_TRUE(TelemetryScrubber::mustDrop(value));
    EXPECT_FALSE(TelemetryScrubber::mustDrop("\xc3\xa4"));
}

TEST(TelemetryScrubber, anEntryGoesWithItsKeyAndKeysAreNotLookedAt)
{
    const TelemetryProperties properties = {
        {"me@example.org", "fine"}, {"/etc", "fine"}, {"a", "me@example.org"}, {"b", "/etc"}};
    EXPECT_EQ(TelemetryScrubber::scrub(properties),
              (TelemetryProperties{{"me@example.org", "fine"}, {"/etc", "fine"}}));
    EXPECT_EQ(TelemetryScrubber::scrub({}), TelemetryProperties());
}

} // namespace
} // namespace vellumor::telemetryScrubberTest
