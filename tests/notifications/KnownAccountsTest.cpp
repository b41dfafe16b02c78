#include "notifications/KnownAccounts.h"

#include <gtest/gtest.h>

namespace vellumor::knownAccountsTest {
namespace {

using Ids = std::vector<std::string>;

std::vector<Account> accounts(const Ids& ids)
{
    std::vector<Account> all;
    for (const std::string& id : ids) {
        Account account;
        account.id = id;
        account.displayName = "same name";
        all.push_back(account);
    }
    return all;
}

struct KnownAccountsTest : testing::Test {
    KnownAccounts known;

    Ids fresh(const Ids& ids)
    {
        Ids found;
        for (const Account& account : known.reconcile(accounts(ids)))
            found.push_back(account.id);
        return found;
    }
};

TEST_F(KnownAccountsTest, ofTheFirstScanNoneIsNew)
{
    EXPECT_EQ(fresh({"a", "b"}), Ids());
    EXPECT_EQ(fresh({"a", "b"}), Ids());
}

TEST_F(KnownAccountsTest, afterAFirstScanWithoutAccountsEachOneIsNew)
{
    EXPECT_EQ(fresh({}), Ids());
    EXPECT_EQ(fresh({"a", "b"}), (Ids{"a", "b"}));
}

TEST_F(KnownAccountsTest, newOnesComeOnceAndInTheirOrder)
{
    EXPECT_EQ(fresh({"m"}), Ids());
    EXPECT_EQ(fresh({"z", "m", "b"}), (Ids{"z", "b"}));
    EXPECT_EQ(fresh({"z", "m", "b"}), Ids());
    EXPECT_EQ(fresh({"b", "z", "m", "c"}), Ids{"c"});
}

TEST_F(KnownAccountsTest, oneThatWasGoneIsNewAgain)
{
    EXPECT_EQ(fresh({"a", "b"}), Ids());
    EXPECT_EQ(fresh({"b"}), Ids());
    EXPECT_EQ(fresh({"a", "b"}), Ids{"a"});
    EXPECT_EQ(fresh({}), Ids());
    EXPECT_EQ(fresh({"a", "b"}), (Ids{"a", "b"}));
}

TEST_F(KnownAccountsTest, anAccountIsToldByItsIdAndHandedOnWhole)
{
    EXPECT_EQ(fresh({"a"}), Ids());
    auto renamed = accounts({"a", "b"});
    renamed[0].displayName = "another";
    renamed[1].plan = "Max";
    EXPECT_EQ(known.reconcile(renamed), std::vector<Account>{renamed[1]});
}

} // namespace
} // namespace vellumor::knownAccountsTest
