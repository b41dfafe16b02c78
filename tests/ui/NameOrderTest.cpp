#include "ui/NameOrder.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vellumor::nameOrderTest {
namespace {

using Names = std::vector<std::string>;

struct NameOrderTest : testing::Test {
    ~NameOrderTest() override { QLocale::setDefault(QLocale::c()); }
    static Names sorted(Names names)
    {
        std::stable_sort(names.begin(), names.end(), namesInOrder);
        return names;
    }
};

TEST_F(NameOrderTest, upperAndLowerCaseAreAlikeInEveryLocale)
{
    for (const QLocale& locale : {QLocale::c(), QLocale(QLocale::English, QLocale::UnitedStates),
                                  QLocale(QLocale::German, QLocale::Germany)}) {
        QLocale::setDefault(locale);
        EXPECT_EQ(sorted({"ben", "Cyd", "Ada", "dan"}), (Names{"Ada", "ben", "Cyd", "dan"}));
        EXPECT_FALSE(namesInOrder("ada", "ADA"));
        EXPECT_FALSE(namesInOrder("ADA", "ada"));
    }
}

TEST_F(NameOrderTest, equalNamesStayInTheirOrder)
{
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(sorted({"b", "ada", "ADA", "Ada"}), (Names{"ada", "ADA", "Ada", "b"}));
}

TEST_F(NameOrderTest, withoutALocaleLettersBeyondAsciiAreFoldedToo)
{
    QLocale::setDefault(QLocale::c());
    EXPECT_FALSE(namesInOrder("\xC3\x89va", "\xC3\xA9va")); // E with an acute accent, both cases
    EXPECT_FALSE(namesInOrder("\xC3\xA9va", "\xC3\x89va"));
    EXPECT_TRUE(namesInOrder("zoe", "\xC3\x89va"));
}

} // namespace
} // namespace vellumor::nameOrderTest
