#include "diagnostics/Redaction.h"

#include "base/Text.h"

#include <re2/re2.h>

#include <algorithm>

namespace vellumor {

namespace {

constexpr const char* hiddenMark = "…";
constexpr std::size_t shortName = 2;     // hiding every "a" would hide the report
constexpr std::size_t longPattern = 200; // in bytes; what RE2 makes of more takes too much memory

// One form for names and texts, so that a name in another spelling is found.
std::string comparable(std::string_view text)
{
    return Text::printable(Text::composed(text));
}

bool isWordByte(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// Hides `name` in `text` in any letter case; a very short one only where it stands as a word of its
// own.
void hide(const std::string& name, std::string& text)
{
    if (name.size() > longPattern) {
        text = Text::replaced(std::move(text), name, hiddenMark);
        return;
    }
    const bool isShort = Text::length(name) <= shortName;
    // The edge of a word is one of ASCII alone: beside any other sign there is none to be found.
    const std::string front = isShort && isWordByte(name.front()) ? "\\b" : "";
    const std::string back = isShort && isWordByte(name.back()) ? "\\b" : "";
    re2::RE2::GlobalReplace(&text, "(?i)" + front + re2::RE2::QuoteMeta(name) + back, hiddenMark);
}

} // namespace

Redaction::Redaction(std::string home, const std::vector<DiscoveredFacts>& facts)
    : m_home(std::move(home))
{
    for (const DiscoveredFacts& account : facts) {
        for (const auto& name : {account.email, account.org}) {
            if (name && !name->empty())
                m_hidden.push_back(comparable(*name));
        }
    }
    // Longer names first, so that a name within another does not leave the rest of it standing.
    std::stable_sort(m_hidden.begin(), m_hidden.end(),
                     [](const auto& a, const auto& b) { return a.size() > b.size(); });
}

std::string Redaction::shown(std::string_view text) const
{
    std::string result = comparable(text);
    if (result == m_home || result.starts_with(m_home + "/"))
        result.replace(0, m_home.size(), "~");
    result = Text::replaced(std::move(result), "\"" + m_home + "/", "\"~/");
    for (const std::string& name : m_hidden)
        hide(name, result);
    re2::RE2::GlobalReplace(&result, R"([^\s@/"]+@[^\s@/"]+)", hiddenMark);
    return result;
}

} // namespace vellumor
