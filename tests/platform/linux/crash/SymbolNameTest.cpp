#include "platform/linux/crash/SymbolName.h"

#include <gtest/gtest.h>

namespace vellumor::symbolNameTest {
namespace {

TEST(SymbolName, aSymbolOfCppIsReadWithoutItsParameters)
{
    struct Row {
        const char* symbol;
        const char* name;
    };
    const Row rows[] = {
        {"_ZN8vellumor6Poller4tickEi", "vellumor::Poller::tick"},
        {"_ZNK8vellumor6Poller6isIdleEv", "vellumor::Poller::isIdle"},
        {"_ZN8vellumor12_GLOBAL__N_13runERKNS_5UsageE", "vellumor::(anonymous namespace)::run"},
        {"_ZZN8vellumor3runEvENKUliE_clEi", "vellumor::run::{lambda#1}::operator()"},
        {"_ZZN8vellumor3runEvENKUliE0_clEi", "vellumor::run::{lambda#2}::operator()"},
        {"_ZN8vellumor5fetchEv.cold", "vellumor::fetch"},
        {"main", "main"},
        {"", ""},
        {"_Z", "_Z"},
        {"_ZN8vellumor", "_ZN8vellumor"},
        {"__libc_start_main", "__libc_start_main"},
    };
    for (const auto& [symbol, name] : rows) {
        SCOPED_TRACE(symbol);
        EXPECT_EQ(SymbolName::readable(symbol), name);
    }
}

TEST(SymbolName, parametersAreTakenOutWhereverTheyStand)
{
    struct Row {
        const char* name;
        const char* without;
    };
    const Row rows[] = {
        {"f(int)", "f"},
        {"f()", "f"},
        {"f", "f"},
        {"", ""},
        {"f(int (*)(char), g(x)) const", "f"},
        {"f(int)::{lambda(int)#1}::operator()(int) const", "f::{lambda#1}::operator()"},
        {"a::(anonymous namespace)::f(b)", "a::(anonymous namespace)::f"},
        {"f(a::(anonymous namespace)::B)", "f"},
        {"std::vector<int> f<int>(int)", "std::vector<int> f<int>"},
        {"f(a::f()::Frame*) [clone .actor]", "f"},
        {"f(int) const &", "f"},
        {"f(int) &&", "f"},
        {"f)(", "f"},
        {"((((", ""},
        {"))))", ""},
        {"f(", "f"},
    };
    for (const auto& [name, without] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(SymbolName::withoutParameters(name), without);
    }
}

// Each step names the one before twice, so that the name doubles with every dozen bytes.
TEST(SymbolName, aSymbolMadeToGrowStaysAsItIs)
{
    const auto growing = [](std::size_t size) {
        std::string symbol = "_Z1f1A1BIS_S_E";
        const std::string figures = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        for (std::size_t i = 1; symbol.size() < size; ++i) {
            const std::string before = std::string("S") + figures[i] + "_";
            symbol += "S0_I" + before + before + "E";
        }
        return symbol;
    };
    const std::string longer = growing(SymbolName::longestReadable + 1);
    EXPECT_EQ(SymbolName::readable(longer), longer);
    EXPECT_EQ(SymbolName::readable(growing(SymbolName::longestReadable - 20)), "f");
    const std::string hugest(1'000'000, 'x');
    EXPECT_EQ(SymbolName::readable("_ZN" + hugest), "_ZN" + hugest);
}

} // namespace
} // namespace vellumor::symbolNameTest
