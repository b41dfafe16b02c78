#include "Fuzz.h"

#include "accounts/IdentityFile.h"
#include "base/Text.h"

using namespace vellumor;
using fuzz::require;

// The file in which Claude Code keeps who is signed in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view text = fuzz::textOf(bytes, size);
    const auto identity = IdentityFile::parse(std::string(text));
    for (const auto& field : {identity.email, identity.org, identity.displayName, identity.orgType})
        require(!field || Text::isValidUtf8(*field));
    const auto plan = IdentityFile::planLabel(identity.orgType, identity.org);
    require(plan == "Max" || plan == "Pro" || plan == "Team" || plan == identity.org);
    return 0;
}
