#include "history/UsageHistoryStore.h"

#include "store/AccountFiles.h"
#include "store/FileReader.h"

namespace vellumor {

namespace {

// A week of a sample a second is larger than what other files may be.
constexpr std::size_t maxHistorySize = std::size_t{32} * 1024 * 1024;

// As far as a file keeps them apart.
bool isSameMoment(Instant one, Instant other)
{
    using std::chrono::milliseconds;
    return std::chrono::floor<milliseconds>(one) == std::chrono::floor<milliseconds>(other);
}

UsageSamples samplesIn(const FileContents& contents)
{
    if (contents.status != ReadStatus::ok)
        return {};
    return decodeSamples(contents.bytes).value_or(UsageSamples());
}

} // namespace

UsageHistoryStore::UsageHistoryStore(const FileStore& files, std::string dir)
    : m_files(files)
    , m_dir(std::move(dir))
{
    m_files.ensureDirectory(m_dir);
}

void UsageHistoryStore::append(const Usage& usage, const std::string& configDir, Instant now)
{
    const Shared present = load(configDir);
    UsageSample sample = UsageSample::of(usage);
    if (!present->empty() && isSameMoment(present->back().at, sample.at))
        return;
    UsageSamples samples;
    samples.reserve(present->size() + 1);
    samples = *present;
    samples.push_back(std::move(sample));
    samples = trim(std::move(samples), now, retention);
    const std::string path = AccountFiles::path(m_dir, configDir);
    const auto bytes = encodeSamples(samples);
    if (bytes && m_files.write(*bytes, path))
        m_known[path] = {m_files.fingerprint(path),
                         std::make_shared<const UsageSamples>(std::move(samples))};
}

UsageHistoryStore::Shared UsageHistoryStore::load(const std::string& configDir)
{
    // Taken before the reading, so that a write in between is not missed the next time.
    const std::string path = AccountFiles::path(m_dir, configDir);
    const auto file = m_files.fingerprint(path);
    const auto known = m_known.find(path);
    if (known != m_known.end() && known->second.file == file)
        return known->second.samples;
    const FileContents contents = readFile(path, maxHistorySize);
    auto samples = std::make_shared<const UsageSamples>(samplesIn(contents));
    // What cannot be read now may be readable the next time, as the same file.
    if (contents.status == ReadStatus::ok || contents.status == ReadStatus::missing)
        m_known[path] = {file, samples};
    else
        m_known.erase(path);
    return samples;
}

void UsageHistoryStore::prune(const std::vector<std::string>& keptConfigDirs)
{
    AccountFiles::prune(m_dir, keptConfigDirs);
    std::erase_if(m_known,
                  [&](const auto& entry) { return !m_files.fingerprint(entry.first).exists; });
}

UsageSamples UsageHistoryStore::loadFrom(const std::string& dir, const std::string& configDir)
{
    return samplesIn(readFile(AccountFiles::path(dir, configDir), maxHistorySize));
}

UsageSamples UsageHistoryStore::trim(UsageSamples samples, Instant now, double retentionSeconds)
{
    std::erase_if(samples, [&](const UsageSample& sample) {
        return secondsBetween(sample.at, now) > retentionSeconds;
    });
    return samples;
}

} // namespace vellumor
