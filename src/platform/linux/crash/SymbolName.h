#pragma once

#include <string>
#include <string_view>

// SymbolName: what a function of this program is called in a crash report. Pure.
namespace vellumor::SymbolName {

// Longer symbols stay as the linker knows them: a symbol can name its parts again and again, and
// each one more doubles what comes of it.
inline constexpr std::size_t longestReadable = 192;

// "vellumor::Poller::tick" for "_ZN8vellumor6Poller4tickEi": the name without its parameters, which
// would say more about other parts of the program than about this one. A symbol that is none of
// C++'s comes back as it is.
[[nodiscard]] std::string readable(std::string_view symbol);

// A readable name without its lists of parameters and what stands behind them, whatever it holds.
[[nodiscard]] std::string withoutParameters(std::string_view name);

} // namespace vellumor::SymbolName
