#pragma once

#include "accounts/DiscoveredFacts.h"

#include <string>
#include <string_view>
#include <vector>

namespace vellumor {

// Makes text from outside fit for a report that people send to others: one line, no mail address,
// no organisation's name, the home folder as "~". Folder names, service names and log lines are
// such text: a user may have named a config directory after the address that is signed in there.
class Redaction {
public:
    // `home` is the home folder; the names to hide are those of the facts.
    Redaction(std::string home, const std::vector<DiscoveredFacts>& facts);

    [[nodiscard]] std::string shown(std::string_view text) const;

private:
    std::string m_home;
    std::vector<std::string> m_hidden;
};

} // namespace vellumor
