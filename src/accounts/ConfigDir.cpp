#include "accounts/ConfigDir.h"

#include "base/Text.h"

namespace vellumor::ConfigDir {

std::string canonical(std::string_view path, const std::string& home)
{
    if (!Text::isValidUtf8(path))
        return {};
    std::string expanded(path);
    if (path == "~" || path.starts_with("~/"))
        expanded = home + std::string(path.substr(1));
    while (expanded.size() > 1 && expanded.back() == '/')
        expanded.pop_back();
    while (expanded.starts_with("//")) // where the home folder is "/"
        expanded.erase(0, 1);
    return Text::composed(expanded);
}

std::string derivedName(std::string_view path)
{
    const auto slash = path.rfind('/');
    const std::string last(slash == std::string_view::npos ? path : path.substr(slash + 1));
    if (last == ".claude")
        return "Default";
    const std::string rest = Text::replaced(last, ".claude-", "");
    return rest.empty() ? last : Text::capitalised(rest);
}

} // namespace vellumor::ConfigDir
