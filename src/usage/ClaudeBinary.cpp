#include "usage/ClaudeBinary.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace vellumor::ClaudeBinary {

namespace {

// Each path once, in the order of coming.
class Paths {
public:
    void add(const std::string& path)
    {
        if (!path.empty() && std::find(m_paths.begin(), m_paths.end(), path) == m_paths.end())
            m_paths.push_back(path);
    }
    [[nodiscard]] std::vector<std::string> take() { return std::move(m_paths); }

private:
    std::vector<std::string> m_paths;
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The runs of digits in a name, without leading zeros: numbers of any length.
std::vector<std::string_view> numbersIn(std::string_view name)
{
    std::vector<std::string_view> numbers;
    for (std::size_t at = 0; at < name.size();) {
        if (!isDigit(name[at])) {
            ++at;
            continue;
        }
        const std::size_t begin = at;
        while (at < name.size() && isDigit(name[at]))
            ++at;
        std::string_view number = name.substr(begin, at - begin);
        number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
        numbers.push_back(number);
    }
    return numbers;
}

int compareNumbers(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

bool isNewer(const std::string& a, const std::string& b)
{
    const auto ofA = numbersIn(a);
    const auto ofB = numbersIn(b);
    for (std::size_t i = 0; i < std::max(ofA.size(), ofB.size()); ++i) {
        const int order = compareNumbers(i < ofA.size() ? ofA[i] : std::string_view(),
                                         i < ofB.size() ? ofB[i] : std::string_view());
        if (order != 0)
            return order > 0;
    }
    return a > b;
}

// "<folder>/<entry><inside>" for each entry whose name begins with `prefix`, newest first.
std::vector<std::string> globbed(const std::string& folder, const std::string& prefix,
                                 const std::string& inside)
{
    std::vector<std::string> paths;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(prefix))
            paths.push_back(std::string(folder).append("/").append(name).append(inside));
    }
    if (error)
        return {};
    return versionSortedDescending(std::move(paths));
}

} // namespace

std::vector<std::string> candidates(const Hints& hints)
{
    Paths paths;
    for (const auto& path : {hints.override, hints.preference, hints.whichPath, hints.persisted})
        paths.add(path.value_or(""));
    paths.add("/opt/homebrew/bin/claude");
    paths.add("/usr/local/bin/claude");
    paths.add(hints.home + "/.local/bin/claude");
    paths.add(hints.home + "/.claude/local/claude");
    for (const std::string& path : versionSortedDescending(hints.nvmPaths))
        paths.add(path);
    for (const std::string& path : versionSortedDescending(hints.bundledPaths))
        paths.add(path);
    return paths.take();
}

std::vector<std::string> versionSortedDescending(std::vector<std::string> names)
{
    std::stable_sort(names.begin(), names.end(), isNewer);
    return names;
}

std::vector<std::string> globbedNvmPaths(const std::string& home)
{
    return globbed(home + "/.nvm/versions/node", "", "/bin/claude");
}

std::vector<std::string> globbedBundledPaths(const std::string& home)
{
    return globbed(home + "/.vscode/extensions", "anthropic.claude-code-",
                   "/resources/native-binary/claude");
}

} // namespace vellumor::ClaudeBinary
