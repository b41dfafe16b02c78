#include "platform/linux/crash/SymbolName.h"

#include "base/Text.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace vellumor::SymbolName {

namespace {

constexpr std::string_view unnamedSpace = "(anonymous namespace)";
constexpr std::string_view callOperator = "operator()";

// What stands at `at` and has parentheses, but no parameters in them; empty when it is another
// thing.
std::string_view wordWithParentheses(std::string_view rest)
{
    for (const std::string_view word : {unnamedSpace, callOperator}) {
        if (rest.starts_with(word))
            return word;
    }
    return {};
}

} // namespace

std::string readable(std::string_view symbol)
{
    if (!symbol.starts_with("_Z") || symbol.size() > longestReadable)
        return std::string(symbol);
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(std::string(symbol).c_str(), nullptr, nullptr, &status), &std::free);
    return name && status == 0 ? withoutParameters(name.get()) : std::string(symbol);
}

std::string withoutParameters(std::string_view name)
{
    std::string result;
    std::size_t depth = 0;
    for (std::size_t at = 0; at < name.size(); ++at) {
        const auto word = depth == 0 ? wordWithParentheses(name.substr(at)) : std::string_view();
        if (!word.empty()) {
            result += word;
            at += word.size() - 1;
        } else if (name[at] == '(') {
            ++depth;
        } else if (name[at] == ')') {
            depth -= depth > 0 ? 1 : 0;
        } else if (depth == 0) {
            result += name[at];
        }
    }
    // How the compiler has split the function, and what its object is like.
    result = result.substr(0, result.find(" [clone"));
    for (const std::string_view qualifier : {" &&", " &", " const"}) {
        if (result.ends_with(qualifier))
            result.resize(result.size() - qualifier.size());
    }
    return std::string(Text::trimmed(result));
}

} // namespace vellumor::SymbolName
