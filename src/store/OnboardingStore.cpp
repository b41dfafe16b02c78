#include "store/OnboardingStore.h"

#include "base/Json.h"
#include "base/StrictReader.h"
#include "store/FileReader.h"

namespace vellumor {

std::optional<OnboardingState> OnboardingState::decode(std::string_view bytes)
{
    const auto json = parseJson(bytes);
    if (!json)
        return std::nullopt;
    StrictReader reader(*json);
    OnboardingState state;
    reader.required("schemaVersion", state.schemaVersion);
    reader.required("completedVersion", state.completedVersion);
    if (!reader.good() || state.schemaVersion >= 2)
        return std::nullopt;
    return state;
}

std::optional<std::string> OnboardingState::encode() const
{
    return writeJson({{"schemaVersion", schemaVersion}, {"completedVersion", completedVersion}},
                     JsonLayout::pretty);
}

OnboardingStore::OnboardingStore(const FileStore& files, std::string fileURL, RunJob runJob)
    : m_files(files)
    , m_fileURL(std::move(fileURL))
    , m_runJob(std::move(runJob))
{
    const FileContents contents = readFile(m_fileURL);
    if (contents.status == ReadStatus::ok)
        m_current = OnboardingState::decode(contents.bytes).value_or(OnboardingState());
}

void OnboardingStore::setCurrent(const OnboardingState& state)
{
    m_current = state;
    if (const auto bytes = state.encode())
        m_runJob(
            [&files = m_files, file = m_fileURL, bytes = *bytes] { files.write(bytes, file); });
}

bool OnboardingStore::shouldShow(const Environment& environment) const
{
    const auto wish = value(environment, "VELLUMOR_ONBOARDING");
    if (wish == "show")
        return true;
    if (wish == "skip")
        return false;
    return m_current.completedVersion <= 0;
}

} // namespace vellumor
