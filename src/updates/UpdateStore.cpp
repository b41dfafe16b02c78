#include "updates/UpdateStore.h"

#include "base/Format.h"
#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor {

namespace {

bool isOfNewerVersion(std::string_view bytes)
{
    const auto json = parseJsonObject(bytes);
    if (!json)
        return false;
    StrictReader reader(*json);
    int version = 0;
    reader.required("schemaVersion", version);
    return reader.good() && version > 1;
}

} // namespace

std::optional<UpdateState> UpdateState::decode(std::string_view bytes)
{
    const auto json = parseJson(bytes);
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    UpdateState state;
    int schemaVersion = 0;
    reader.required("schemaVersion", schemaVersion);
    reader.required("automatic", state.automatic);
    reader.required("serial", state.serial);
    reader.optional("checkedAt", state.checkedAt, Format::parseISO8601);
    if (!reader.good() || schemaVersion != 1 || state.serial < 0)
        return std::nullopt;
    return state;
}

std::optional<std::string> UpdateState::encode() const
{
    Json json = {{"schemaVersion", 1}, {"automatic", automatic}, {"serial", serial}};
    if (checkedAt)
        json["checkedAt"] = Format::isoFractional(*checkedAt);
    return writeJson(std::move(json), JsonLayout::pretty);
}

UpdateStore::UpdateStore(const FileStore& files, std::string fileURL, RunJob runJob)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
    , m_runJob(std::move(runJob))
{
    const FileContents contents = readFile(m_fileURL);
    if (contents.status != ReadStatus::ok)
        return;
    m_current = UpdateState::decode(contents.bytes).value_or(UpdateState());
    m_isOfNewerVersion = isOfNewerVersion(contents.bytes);
}

void UpdateStore::save(const UpdateState& state)
{
    if (state == m_current)
        return;
    m_current = state;
    const auto bytes = state.encode();
    if (bytes && !m_isOfNewerVersion)
        m_runJob(
            [&files = m_files, file = m_fileURL, bytes = *bytes] { files.write(bytes, file); });
}

} // namespace vellumor
