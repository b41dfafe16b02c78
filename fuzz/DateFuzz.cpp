#include "Fuzz.h"

#include "base/Format.h"

using namespace vellumor;
using fuzz::require;

// Dates of the server, the sibling and the program itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const auto whole = Format::parseISO8601WholeSeconds(text);
    const auto instant = Format::parseISO8601(text);
    require(!whole || whole == instant);
    if (!instant)
        return 0;
    const std::string written = Format::isoFractional(*instant);
    require(written.size() == 24);
    require(Format::parseISO8601(written) ==
            std::chrono::floor<std::chrono::milliseconds>(*instant));
    require(Format::parseISO8601WholeSeconds(Format::isoWholeSeconds(*instant)) ==
            std::chrono::floor<std::chrono::seconds>(*instant));
    return 0;
}
