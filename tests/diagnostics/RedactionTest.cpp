#include "diagnostics/Redaction.h"

#include <gtest/gtest.h>

namespace vellumor::redactionTest {
namespace {

DiscoveredFacts facts(std::optional<std::string> email, std::optional<std::string> org)
{
    DiscoveredFacts account;
    account.email = std::move(email);
    account.org = std::move(org);
    return account;
}

const Redaction redaction("/home/ann", {facts("ann@example.org", "Acme"),
                                        facts("x", "Acme Research"), facts(std::nullopt, "AB")});

TEST(Redaction, hidesWhatCouldTellWhoIsSignedIn)
{
    const std::pair<const char*, const char*> rows[] = {
        {"/home/ann/.claude", "~/.claude"},
        {"/home/ann", "~"},
        {"/home/anna/.claude", "/home/anna/.claude"},
        {"/srv/.claude-ann@example.org", "/srv/.claude-…"},
        {"/home/ann/.claude-other@mail.example", "~/…"},
        {"/home/ann/.claude-Acme", "~/.claude-…"},
        {"/home/ann/.claude-acme", "~/.claude-…"},
        {"Acme Research plan", "… plan"},
        {"Claude Code-credentials", "Claude Code-credentials"},
        {R"({"configDir":"/home/ann/.claude-acme","trigger":"auto"})",
         R"({"configDir":"~/.claude-…","trigger":"auto"})"},
    };
    for (const auto& [text, shown] : rows)
        EXPECT_EQ(redaction.shown(text), shown);
}

TEST(Redaction, aVeryShortNameIsHiddenWhereItIsAWordAndLeavesOtherWordsReadable)
{
    EXPECT_EQ(redaction.shown("max ABC"), "max ABC");
    EXPECT_EQ(redaction.shown("/home/ann/.claude-ab"), "~/.claude-…");
}

TEST(Redaction, aVeryShortNameOfOtherLettersIsHiddenToo)
{
    for (const std::string org : {"李明", "Ü", "ü", "A&", "é1"}) {
        const Redaction one("/home/ann", {facts(std::nullopt, org)});
        EXPECT_EQ(one.shown("/home/ann/.claude-" + org), "~/.claude-…") << org;
        EXPECT_EQ(one.shown(org + " plan"), "… plan") << org;
    }
}

TEST(Redaction, aNameIsFoundInAnyComposition)
{
    const Redaction composed("/home/ann", {facts(std::nullopt, "Caf\u00e9 Noir")});
    EXPECT_EQ(composed.shown("Cafe\u0301 Noir"), "…");
    const Redaction decomposed("/home/ann", {facts(std::nullopt, "Cafe\u0301 Noir")});
    EXPECT_EQ(decomposed.shown("Caf\u00e9 Noir"), "…");
}

TEST(Redaction, aVeryLongNameIsHiddenToo)
{
    const std::string name(10000, 'n');
    const Redaction longest("/home/ann", {facts(std::nullopt, name)});
    EXPECT_EQ(longest.shown(".claude-" + name), ".claude-…");
}

TEST(Redaction, controlCharactersCannotForgeALine)
{
    EXPECT_EQ(redaction.shown("a\nb\x1b[2J"), "a\uFFFDb\uFFFD[2J");
}

TEST(Redaction, aNameIsTakenLiterally)
{
    const Redaction odd("/home/ann", {facts(std::nullopt, "a.c(")});
    EXPECT_EQ(odd.shown("a.c( abc("), "… abc(");
}

} // namespace
} // namespace vellumor::redactionTest
