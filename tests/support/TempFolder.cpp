#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace vellumor::test {

namespace fs = std::filesystem;

TempFolder::TempFolder()
{
    std::string pattern = (fs::temp_directory_path() / "vellumor-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        std::abort();
    m_path = pattern;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string TempFolder::file(std::string_view name) const
{
    return m_path + "/" + std::string(name);
}

std::string TempFolder::put(std::string_view name, std::string_view bytes) const
{
    const std::string path = file(name);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    EXPECT_TRUE(out.good()) << path;
    return path;
}

std::string TempFolder::makeFolder(std::string_view name) const
{
    const std::string path = file(name);
    fs::create_directories(path);
    return path;
}

std::string contentsOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

unsigned modeOf(const std::string& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

std::vector<std::string> namesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> filesBelow(const std::string& folder)
{
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && !entry.is_symlink())
            files.push_back(entry.path().string());
    }
    return files;
}

} // namespace vellumor::test
