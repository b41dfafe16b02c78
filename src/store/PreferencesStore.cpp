#include "store/PreferencesStore.h"

#include "store/FileReader.h"

namespace vellumor {

PreferencesStore::PreferencesStore(const FileStore& files, std::string fileURL, RunJob runJob)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
    , m_runJob(std::move(runJob))
{
    const FileContents contents = readFile(m_fileURL);
    if (contents.status == ReadStatus::ok)
        m_current = Preferences::decode(contents.bytes).value_or(Preferences()).clamped();
}

Preferences PreferencesStore::save(const Preferences& preferences)
{
    m_current = preferences.clamped();
    m_current.schemaVersion = 1;
    if (const auto bytes = m_current.encode())
        m_runJob(
            [&files = m_files, file = m_fileURL, bytes = *bytes] { files.write(bytes, file); });
    return m_current;
}

} // namespace vellumor
