#pragma once

#include "store/FileReader.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace vellumor::test {

// Bytes, and what is the matter with them.
struct HostileText {
    std::string what;
    std::string bytes;
};

// The same for what stands under a path, be it a file or not.
struct HostileFile {
    std::string what;
    std::function<void(const std::string& path)> put;
};

// `valid` with a key of no meaning at the front of its first object.
inline std::string withKey(const std::string& valid, const std::string& value)
{
    return std::string(valid).insert(valid.find('{') + 1, R"("x":)" + value + ",");
}

// `valid` with blanks behind it, `size` bytes in all.
inline std::string padded(std::string valid, std::size_t size)
{
    valid.resize(size, ' ');
    return valid;
}

// Arrays within one another.
inline std::string nested(std::size_t levels)
{
    return std::string(levels, '[') + std::string(levels, ']');
}

inline void putBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    EXPECT_TRUE(out.good()) << path;
}

// Bytes that no reader of JSON may take, each with one fault that `valid` has not.
inline std::vector<HostileText> hostileTexts(const std::string& valid)
{
    using namespace std::string_literals;
    return {
        {"empty", ""},
        {"blank", " \n"},
        {"null", "null"},
        {"cut", valid.substr(0, valid.find_last_not_of(" \n"))},
        {"twice", valid + valid},
        {"a word in front", "x" + valid},
        {"a NUL byte behind", valid + '\0'},
        {"a NUL byte in a string", withKey(valid, "\"\0\""s)},
        {"a line feed in a string", withKey(valid, "\"\n\"")},
        {"no UTF-8 in a string", withKey(valid, "\"\xFF\"")},
        {"no UTF-8 behind", valid + "\xFF"},
        {"a character cut in a string", withKey(valid, "\"\xC3\"")},
        {"a high surrogate alone", withKey(valid, R"("\ud800")")},
        {"a low surrogate alone", withKey(valid, R"("\udc00")")},
        {"no number", withKey(valid, "NaN")},
        {"nested deep", withKey(valid, nested(1000))},
        {"nested very deep", withKey(valid, nested(1'000'000))},
        {"brackets without end", std::string(1'000'000, '[')},
    };
}

// Those, and all else that a reader of files up to `limit` bytes must neither take nor wait for.
inline std::vector<HostileFile> hostileFiles(const std::string& valid,
                                             std::size_t limit = maxFileSize)
{
    std::vector<HostileFile> files = {
        {"too large", [=](const std::string& path) { putBytes(path, padded(valid, limit + 1)); }},
        {"a pipe", [](const std::string& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
        {"a folder", [](const std::string& path) { std::filesystem::create_directory(path); }},
        {"a link to nothing",
         [](const std::string& path) { std::filesystem::create_symlink("nothing", path); }},
        {"a link to itself",
         [](const std::string& path) { std::filesystem::create_symlink(path, path); }},
    };
    for (const auto& [what, bytes] : hostileTexts(valid))
        files.push_back({what, [=](const std::string& path) { putBytes(path, bytes); }});
    return files;
}

} // namespace vellumor::test
