#pragma once

#include "store/FileStore.h"
#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <tuple>

namespace vellumor::test {

// Another after every write, even of the same bytes: a write replaces the file by a new one.
using FileState = std::tuple<ino_t, time_t, long, std::string>;

inline FileState stateOf(const std::string& path)
{
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec, contentsOf(path)};
}

// `change` writes `path`, and each call that this takes fails once: the old file has to stay, with
// nothing beside it.
inline void expectTheOldFileStays(const std::string& path,
                                  const std::function<void(const FileStore&)>& change)
{
    using Call = FailingFileCalls::Call;
    struct Row {
        Call call;
        int error;
        const char* name;
    };
    const Row rows[] = {{Call::create, EACCES, "create"},
                        {Call::write, ENOSPC, "write"},
                        {Call::fsync, EIO, "fsync file"},
                        {Call::rename, EROFS, "rename"}};
    const std::string dir = std::filesystem::path(path).parent_path().string();
    for (const auto& [call, error, name] : rows) {
        SCOPED_TRACE(name);
        const FileState before = stateOf(path);
        const auto names = namesIn(dir);
        FailingFileCalls calls;
        calls.failNext(call, 1, error);
        change(FileStore(calls));
        ASSERT_FALSE(calls.log().empty());
        EXPECT_EQ(calls.log().back(), name);
        EXPECT_EQ(stateOf(path), before);
        EXPECT_EQ(namesIn(dir), names);
    }
}

} // namespace vellumor::test
