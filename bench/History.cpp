#include "Ratio.h"
#include "SampleReading.h"

#include "history/UsageHistoryStore.h"
#include "store/AccountFiles.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <cstdlib>
#include <memory>

namespace vellumor::bench {

namespace {

namespace ondemand = simdjson::ondemand;

constexpr int samplesOfAWeek = 10080; // one a minute
constexpr const char* configDir = "/home/ada/.claude";

Usage reading(int minute)
{
    return sampleReading(Instant(std::chrono::seconds(1772359200)) + std::chrono::minutes(minute) +
                             std::chrono::milliseconds(minute % 1000),
                         minute);
}

// A store whose file holds a full week, to which the next minute can be added for ever.
class FullWeek {
public:
    explicit FullWeek(const std::string& folder)
        : m_folder(folder)
        , m_store(m_files, folder)
        , m_path(AccountFiles::path(folder, configDir))
    {
        UsageSamples samples;
        for (; m_minute < samplesOfAWeek; ++m_minute)
            samples.push_back(UsageSample::of(reading(m_minute)));
        m_files.write(bytesOf(samples), m_path);
    }

    void append()
    {
        const Usage usage = reading(m_minute++);
        m_store.append(usage, configDir, usage.fetchedAt);
    }
    [[nodiscard]] UsageSamples load() const
    {
        UsageSamples samples = UsageHistoryStore::loadFrom(m_folder, configDir);
        if (samples.size() < samplesOfAWeek)
            std::abort();
        return samples;
    }
    [[nodiscard]] std::string bytes() const { return bytesOf(load()); }
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    static std::string bytesOf(const UsageSamples& samples)
    {
        return encodeSamples(samples).value();
    }

    FileStore m_files;
    std::string m_folder;
    UsageHistoryStore m_store;
    std::string m_path;
    int m_minute = 0;
};

// Reads the file and looks at every key, text and number in it, keeping nothing.
double walk(const std::string& path)
{
    const simdjson::padded_string bytes = simdjson::padded_string::load(path);
    ondemand::parser parser;
    ondemand::document document = parser.iterate(bytes);
    double sum = 0;
    for (ondemand::object sample : document.get_array()) {
        for (auto field : sample) {
            if (field.unescaped_key().value() == "at") {
                sum += static_cast<double>(field.value().get_string().value().size());
                continue;
            }
            for (auto percent : field.value().get_object()) {
                sum += static_cast<double>(percent.unescaped_key().value().size());
                sum += percent.value().get_double().value();
            }
        }
    }
    return sum;
}

} // namespace

std::vector<Comparison> usageHistory(const std::string& folder)
{
    const auto week = std::make_shared<FullWeek>(folder);
    return {{"loading a week of history", [week] { benchmark::DoNotOptimize(week->load()); },
             [path = week->path()] { benchmark::DoNotOptimize(walk(path)); }, 200, 1, 2.0},
            {"appending to a week of history", [week] { week->append(); },
             [folder, bytes = week->bytes()] { writeBare(folder, bytes); }, 60, 1, 3.0}};
}

} // namespace vellumor::bench
