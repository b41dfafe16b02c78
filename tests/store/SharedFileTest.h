#pragma once

#include "base/Json.h"
#include "store/FileStore.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vellumor::test {

using Names = std::vector<std::string>;
using Outcome = FileStore::UpdateOutcome;
using Update = FileStore::Update;

// A delta that sets one key.
inline FileStore::Delta setting(const std::string& key, const Json& value)
{
    return [key, value](const Json& object) {
        Json changed = object;
        changed[key] = value;
        return changed;
    };
}

// A JSON file that several programs write, in a folder that is not there yet.
struct SharedFileTest : testing::Test {
    TempFolder folder;
    std::string path = folder.file("shared/file.json");
    FileStore files;

    // What an update logs.
    std::string logged(const Update& update, const FileStore::Delta& delta, Outcome expected)
    {
        testing::internal::CaptureStderr();
        const Outcome outcome = files.updateJSONObject(path, update, delta);
        EXPECT_EQ(outcome, expected);
        return testing::internal::GetCapturedStderr();
    }
};

inline Update ofVersion(int version)
{
    Update update;
    update.currentSchemaVersion = version;
    return update;
}

} // namespace vellumor::test
