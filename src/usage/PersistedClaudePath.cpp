#include "usage/PersistedClaudePath.h"

#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor {

PersistedClaudePath::PersistedClaudePath(const FileStore& files, std::string fileURL)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
{
}

std::optional<std::string> PersistedClaudePath::read() const
{
    const FileContents contents = readFile(m_fileURL);
    const auto json =
        contents.status == ReadStatus::ok ? parseJsonObject(contents.bytes) : std::nullopt;
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    std::string path;
    reader.required("path", path);
    if (!reader.good() || path.empty())
        return std::nullopt;
    return path;
}

void PersistedClaudePath::note(const std::string& path)
{
    if (read() == path)
        return;
    const Json json = {{"schemaVersion", 1}, {"path", path}};
    if (const auto bytes = writeJson(json, JsonLayout::pretty))
        m_files.write(*bytes, m_fileURL);
}

} // namespace vellumor
