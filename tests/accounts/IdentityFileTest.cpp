#include "accounts/IdentityFile.h"

#include <gtest/gtest.h>

namespace vellumor::identityFileTest {
namespace {

using IdentityFile::Identity;
using Text = std::optional<std::string>;

TEST(IdentityFile, theFourTextsOfTheAccountAreRead)
{
    const Identity identity = IdentityFile::parse(
        R"({"oauthAccount": {"emailAddress": "ada@example.org", "organizationName": "Engines",
            "displayName": "Ada", "organizationType": "claude_max", "accountUuid": "x"},
            "projects": {"/a": {"history": [1, 2, {"x": null}]}}})");
    EXPECT_EQ(identity, (Identity{"ada@example.org", "Engines", "Ada", "claude_max"}));
}

TEST(IdentityFile, whatIsMissingOrOfAnotherTypeIsAbsentAndSpoilsNothingElse)
{
    const struct {
        const char* account;
        Identity identity;
    } rows[] = {
        {"{}", {}},
        {R"({"emailAddress": "a@b"})", {"a@b", {}, {}, {}}},
        {R"({"emailAddress": 1, "organizationName": "O"})", {{}, "O", {}, {}}},
        {R"({"emailAddress": null, "displayName": "D"})", {{}, {}, "D", {}}},
        {R"({"organizationName": ["O"], "organizationType": true})", {}},
        {R"({"displayName": {}, "organizationType": "t"})", {{}, {}, {}, "t"}},
        {R"({"EmailAddress": "a@b"})", {}},
    };
    for (const auto& [account, identity] : rows) {
        SCOPED_TRACE(account);
        EXPECT_EQ(IdentityFile::parse(std::string(R"({"oauthAccount": )") + account + "}"),
                  identity);
    }
}

TEST(IdentityFile, anEmptyTextIsAValue)
{
    EXPECT_EQ(IdentityFile::parse(R"({"oauthAccount": {"emailAddress": "", "displayName": " "}})"),
              (Identity{"", {}, " ", {}}));
}

TEST(IdentityFile, aTextThatIsCutInTheMiddleOfAPairSpoilsNothingElse)
{
    const char* const texts[] = {
        R"(\ud83d)",   R"(\ude00)",   R"(x\ud83dx)", R"(\ud83d\ud83d\ude00)",
        R"(\ud83d\n)", R"(\\\ud83d)", R"(\\ud83d)",  R"(\ud83d\ude00)"};
    for (const char* const text : texts) {
        const auto identity = IdentityFile::parse(
            std::string(R"({"history": [")") + text +
            R"("], "oauthAccount": {"emailAddress": "a@b", "displayName": "\ud83d\ude00"}})");
        EXPECT_EQ(identity.email, "a@b") << text;
        EXPECT_EQ(identity.displayName, "\U0001F600") << text;
    }
}

TEST(IdentityFile, halfAPairInANameIsTheSignForWhatCannotBeRead)
{
    EXPECT_EQ(IdentityFile::parse(R"({"oauthAccount": {"displayName": "A\ud83d"}})").displayName,
              "A\uFFFD");
}

TEST(IdentityFile, aBrokenFileHasNoIdentity)
{
    const char* const account = R"({"oauthAccount": {"emailAddress": "a@b"}})";
    const std::string rows[] = {
        "",
        "   ",
        "null",
        "[]",
        "\"oauthAccount\"",
        R"({"oauthAccount": null})",
        R"({"oauthAccount": []})",
        R"({"oauthAccount": "a@b"})",
        R"({"emailAddress": "a@b"})",
        R"({"oauthAccount": {"emailAddress": "a@b"})",
        R"({"oauthAccount": {"emailAddress": "a@b"}} x)",
        "{\"oauthAccount\": {\"emailAddress\": \"a\xFF\"}}",
        "[" + std::string(account) + "]",
        std::string(account) + '\0',
    };
    for (const std::string& bytes : rows) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(IdentityFile::parse(bytes), Identity());
    }
    EXPECT_EQ(IdentityFile::parse(account).email, "a@b");
}

TEST(IdentityFile, theKnownOrganisationTypesHaveALabelOfTheirOwn)
{
    EXPECT_EQ(IdentityFile::planLabel("claude_max", "pro"), "Max");
    EXPECT_EQ(IdentityFile::planLabel("claude_pro", "max"), "Pro");
    EXPECT_EQ(IdentityFile::planLabel("claude_team", std::nullopt), "Team");
}

TEST(IdentityFile, anyOtherOrganisationTypeGivesTheSubscriptionAsItStands)
{
    for (const Text& type : {Text(), Text(""), Text("claude_enterprise"), Text("Claude_Max"),
                             Text("max"), Text("claude_max ")}) {
        SCOPED_TRACE(type.value_or("absent"));
        EXPECT_EQ(IdentityFile::planLabel(type, "mAx_20"), "mAx_20");
        EXPECT_EQ(IdentityFile::planLabel(type, ""), "");
        EXPECT_EQ(IdentityFile::planLabel(type, std::nullopt), std::nullopt);
    }
}

} // namespace
} // namespace vellumor::identityFileTest
