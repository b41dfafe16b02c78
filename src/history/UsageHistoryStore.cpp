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

} // namespace

UsageHistoryStore::UsageHistoryStore(const FileStore& files, std::string dir)
    : m_files(files)
    , m_dir(std::move(dir))
{
    m_files.ensureDirectory(m_dir);
}

void UsageHistoryStore::append(const Usage& usage, const std::string& configDir, Instant now)
{
    UsageSamples samples = load(configDir);
    UsageSample sample = UsageSample::of(usage);
    if (!samples.empty() && isSameMoment(samples.back().at, sample.at))
        return;
    samples.push_back(std::move(sample));
    if (const auto bytes = encodeSamples(trim(std::move(samples), now, retention)))
        m_files.write(*bytes, AccountFiles::path(m_dir, configDir));
}

UsageSamples UsageHistoryStore::load(const std::string& configDir) const
{
    return loadFrom(m_dir, configDir);
}

UsageHistoryStore::Loaded
UsageHistoryStore::loadUnless(const std::optional<FileStore::Fingerprint>& known,
                              const std::string& configDir) const
{
    // Before the reading, so that a write in between is not missed the next time.
    const auto file = m_files.fingerprint(AccountFiles::path(m_dir, configDir));
    if (known == file)
        return {file, std::nullopt};
    return {file, load(configDir)};
}

void UsageHistoryStore::prune(const std::vector<std::string>& keptConfigDirs)
{
    AccountFiles::prune(m_dir, keptConfigDirs);
}

UsageSamples UsageHistoryStore::loadFrom(const std::string& dir, const std::string& configDir)
{
    const FileContents contents = readFile(AccountFiles::path(dir, configDir), maxHistorySize);
    if (contents.status != ReadStatus::ok)
        return {};
    return decodeSamples(contents.bytes).value_or(UsageSamples());
}

UsageSamples UsageHistoryStore::trim(UsageSamples samples, Instant now, double retentionSeconds)
{
    std::erase_if(samples, [&](const UsageSample& sample) {
        return secondsBetween(sample.at, now) > retentionSeconds;
    });
    return samples;
}

} // namespace vellumor
