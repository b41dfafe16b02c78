#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vellumor::test {

// A folder of its own below the system's temporary folder, gone with everything in it at the end.
class TempFolder {
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    [[nodiscard]] const std::string& path() const { return m_path; }
    // The path of `name` in it.
    [[nodiscard]] std::string file(std::string_view name) const;
    // Writes `bytes` under `name`, with all folders that are missing; gives the path.
    std::string put(std::string_view name, std::string_view bytes) const;
    // Makes a folder; gives the path.
    std::string makeFolder(std::string_view name) const;

private:
    std::string m_path;
};

// The whole file; empty when there is none.
[[nodiscard]] std::string contentsOf(const std::string& path);
// The permission bits.
[[nodiscard]] unsigned modeOf(const std::string& path);
// The names in a folder, sorted, hidden ones included.
[[nodiscard]] std::vector<std::string> namesIn(const std::string& folder);
// Every regular file below a folder, as paths.
[[nodiscard]] std::vector<std::string> filesBelow(const std::string& folder);

} // namespace vellumor::test
