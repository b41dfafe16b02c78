#include "history/Percents.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace vellumor::percentsTest {

namespace {

std::vector<std::string> kindsIn(const Percents& percents)
{
    std::vector<std::string> kinds;
    for (const auto& [kind, percent] : percents)
        kinds.push_back(kind);
    return kinds;
}

} // namespace

TEST(Percents, aNewOneIsEmpty)
{
    const Percents percents;
    EXPECT_TRUE(percents.empty());
    EXPECT_EQ(percents.size(), 0U);
    EXPECT_EQ(percents.begin(), percents.end());
    EXPECT_EQ(percents.find(""), nullptr);
    EXPECT_EQ(percents.find("session"), nullptr);
}

TEST(Percents, whatIsSetIsFoundAndNothingElse)
{
    Percents percents;
    percents.set("weekly_all", 5.5);
    percents.set("session", -1);
    ASSERT_NE(percents.find("session"), nullptr);
    EXPECT_EQ(*percents.find("session"), -1.0);
    EXPECT_EQ(*percents.find("weekly_all"), 5.5);
    for (const char* kind : {"", "a", "sessio", "sessions", "Session", "weekly", "z"})
        EXPECT_EQ(percents.find(kind), nullptr) << kind;
    EXPECT_EQ(percents.size(), 2U);
    EXPECT_FALSE(percents.empty());
}

TEST(Percents, settingAKindAgainReplacesItsPercent)
{
    Percents percents = {{"a", 1}, {"b", 2}, {"c", 3}};
    percents.set("b", 20);
    percents.set("c", 30);
    percents.set("a", 10);
    EXPECT_EQ(percents, (Percents{{"a", 10}, {"b", 20}, {"c", 30}}));
    EXPECT_EQ((Percents{{"x", 1}, {"x", 2}, {"a", 0}, {"x", 3}}), (Percents{{"a", 0}, {"x", 3}}));
}

TEST(Percents, theKindsAreSortedByTheirBytesWhateverTheOrderOfSetting)
{
    using namespace std::string_literals;
    const std::vector<std::string> sorted = {""s,     "A"s,  "Z"s, "a"s,      "a\0"s,
                                             "a\0b"s, "aa"s, "b"s, "\u00E9"s, "\U0001F600"s};
    Percents forwards;
    for (const std::string& kind : sorted)
        forwards.set(kind, 1);
    Percents backwards;
    for (auto kind = sorted.rbegin(); kind != sorted.rend(); ++kind)
        backwards.set(*kind, 1);
    EXPECT_EQ(kindsIn(forwards), sorted);
    EXPECT_EQ(kindsIn(backwards), sorted);
    EXPECT_EQ(forwards, backwards);
}

TEST(Percents, itIsADictionaryLikeAnyOther)
{
    std::mt19937 random(17); // NOLINT: the same numbers in every run
    std::map<std::string, double> expected;
    Percents percents;
    for (int i = 0; i < 2000; ++i) {
        const std::string kind = std::to_string(random() % 300);
        const auto percent = static_cast<double>(random() % 100);
        expected[kind] = percent;
        percents.set(kind, percent);
        ASSERT_EQ(*percents.find(kind), percent);
        ASSERT_EQ(percents.size(), expected.size());
    }
    auto place = expected.begin();
    for (const auto& [kind, percent] : percents) {
        EXPECT_EQ(kind, place->first);
        EXPECT_EQ(percent, place->second);
        ++place;
    }
}

TEST(Percents, aCopyThatChangesLeavesTheOtherAsItIs)
{
    const Percents original = {{"b", 1}, {"d", 2}};
    Percents copy = original;
    copy.set("b", 10);
    EXPECT_EQ(original, (Percents{{"b", 1}, {"d", 2}}));
    copy.set("a", 0);
    copy.set("c", 5);
    EXPECT_EQ(original, (Percents{{"b", 1}, {"d", 2}}));
    EXPECT_EQ(copy, (Percents{{"a", 0}, {"b", 10}, {"c", 5}, {"d", 2}}));
}

TEST(Percents, manyEntriesInTheWorstOrderAreTakenInAtOnce)
{
    std::vector<std::string> kinds;
    for (int i = 0; i < 200'000; ++i)
        kinds.push_back(std::to_string(999'999 - i));
    std::vector<std::pair<std::string_view, double>> entries(kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i)
        entries[i] = {kinds[i], static_cast<double>(i)};
    const Percents percents(std::move(entries));
    EXPECT_EQ(percents.size(), kinds.size());
    EXPECT_EQ(*percents.find("999999"), 0.0);
    EXPECT_EQ(*percents.find("800000"), 199'999.0);
}

TEST(Percents, aCopyAndItsOriginalChangeApart)
{
    const Percents few = {{"b", 2}, {"d", 4}};
    const Percents many = {{"b", 2}, {"d", 4}, {"e", 5}, {"f", 6}, {"g", 7}, {"h", 8}};
    for (const Percents& percents : {few, many}) {
        for (const char* kind : {"a", "b", "c", "d", "z"}) {
            SCOPED_TRACE(kind);
            const Percents original = percents;
            Percents copy = original;
            EXPECT_EQ(copy, percents);
            copy.set(kind, 99);
            EXPECT_EQ(*copy.find(kind), 99.0);
            EXPECT_NE(copy, original);
            EXPECT_EQ(original, percents);
            Percents second = copy;
            second.set("y", 1);
            EXPECT_EQ(copy.find("y"), nullptr);
            EXPECT_EQ(kindsIn(original), kindsIn(percents));
        }
    }
}

TEST(Percents, ofTwoEntriesOfOneKindTheLaterCounts)
{
    const Percents percents(
        std::vector<std::pair<std::string_view, double>>{{"b", 1}, {"a", 2}, {"b", 3}, {"a", 4}});
    EXPECT_EQ(percents, (Percents{{"a", 4}, {"b", 3}}));
}

TEST(Percents, aKindHasAnIndexUnderWhichItsPercentIsSet)
{
    Percents percents = {{"f", 6}, {"e", 5}, {"d", 4}, {"c", 3}, {"b", 2}, {"a", 1}};
    for (std::size_t i = 0; i < percents.size(); ++i) {
        EXPECT_EQ(percents.kindAt(i), std::string(1, static_cast<char>('a' + i)));
        percents.setAt(i, -static_cast<double>(i));
    }
    EXPECT_EQ(percents,
              (Percents{{"a", 0}, {"b", -1}, {"c", -2}, {"d", -3}, {"e", -4}, {"f", -5}}));
}

TEST(Percents, equalAreThoseOfTheSameKindsAndPercents)
{
    const Percents percents = {{"a", 1}, {"b", 2}};
    EXPECT_EQ(percents, (Percents{{"b", 2}, {"a", 1}}));
    EXPECT_NE(percents, (Percents{{"a", 1}}));
    EXPECT_NE(percents, (Percents{{"a", 1}, {"b", 2.5}}));
    EXPECT_NE(percents, (Percents{{"a", 1}, {"c", 2}}));
    EXPECT_NE(percents, Percents());
    EXPECT_EQ(Percents(), Percents(std::vector<std::pair<std::string_view, double>>()));
}

} // namespace vellumor::percentsTest
