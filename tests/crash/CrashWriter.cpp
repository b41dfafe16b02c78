// Writes through the real stores until it is killed, and reports each number once its write has
// returned.

#include "accounts/AccountStore.h"
#include "base/Json.h"
#include "crash/CrashFiles.h"
#include "store/OnboardingStore.h"
#include "store/PreferencesStore.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

using namespace vellumor;
using test::CrashFile;

namespace {

class StillClock final : public Clock {
public:
    [[nodiscard]] Instant now() const override { return {}; }
    [[nodiscard]] std::unique_ptr<Alarm> after(std::chrono::milliseconds,
                                               std::function<void()>) override
    {
        return std::make_unique<Alarm>();
    }
};

class Writer {
public:
    explicit Writer(const std::string& base)
        : m_base(base)
        , m_shared(m_files, path(CrashFile::sharedAccounts))
        , m_accounts(m_files, m_shared, m_clock, path(CrashFile::accounts), "/home/user", runAtOnce)
        , m_preferences(m_files, path(CrashFile::preferences), runAtOnce)
        , m_onboarding(m_files, path(CrashFile::onboarding), runAtOnce)
    {
        if (m_accounts.records().empty())
            m_accounts.upsertManual(test::crashAccountDir, std::nullopt);
    }

    // One more in each file, round and round; goes on from what the files say. Beginning elsewhere
    // each time gives every file its share of the kills.
    [[noreturn]] void writeForEver(int first)
    {
        for (int turn = first;; ++turn) {
            switch (turn % 4) {
            case 0:
                report(CrashFile::preferences, writePreferences());
                break;
            case 1:
                report(CrashFile::onboarding, writeOnboarding());
                break;
            case 2:
                writeAccounts();
                break;
            default:
                report(CrashFile::counters, writeCounters());
                break;
            }
        }
    }

private:
    [[nodiscard]] std::string path(CrashFile file) const { return test::crashPath(m_base, file); }

    static void report(CrashFile file, int number)
    {
        const test::CrashReport report{file, number};
        if (::write(STDOUT_FILENO, &report, sizeof report) != sizeof report)
            ::_exit(1); // nobody listens any more
    }

    [[nodiscard]] int writePreferences()
    {
        Preferences preferences = m_preferences.current();
        const int number = preferences.claudeBinaryPath.empty()
                               ? 1
                               : std::stoi(preferences.claudeBinaryPath.substr(1)) + 1;
        preferences.claudeBinaryPath = "/" + std::to_string(number);
        // Sizes differ from write to write, so that a cut file could not pass for a whole one.
        preferences.customThresholds.clear();
        for (int i = 0; i < number % 100; ++i)
            preferences.customThresholds["account-" + std::to_string(i)] = 50;
        m_preferences.save(preferences);
        return number;
    }

    [[nodiscard]] int writeOnboarding()
    {
        OnboardingState state = m_onboarding.current();
        ++state.completedVersion;
        m_onboarding.setCurrent(state);
        return state.completedVersion;
    }

    void writeAccounts()
    {
        const StoredAccount& account = m_accounts.records().at(test::crashAccountDir);
        const int number =
            account.name.starts_with("n") ? std::stoi(account.name.substr(1)) + 1 : 1;
        m_accounts.rename(account.id, "n" + std::to_string(number));
        report(CrashFile::accounts, number);
        report(CrashFile::sharedAccounts, number);
    }

    [[nodiscard]] int writeCounters()
    {
        int number = 0;
        FileStore::Update update;
        update.currentSchemaVersion = 1;
        const auto outcome =
            m_files.updateJSONObject(path(CrashFile::counters), update, [&](const Json& object) {
                Json changed = object;
                number = object.value("number", 0) + 1;
                changed["schemaVersion"] = 1;
                changed["number"] = number;
                return changed;
            });
        if (outcome != FileStore::UpdateOutcome::written)
            ::_exit(2);
        return number;
    }

    std::string m_base;
    StillClock m_clock;
    FileStore m_files;
    SharedAccountsStore m_shared;
    AccountStore m_accounts;
    PreferencesStore m_preferences;
    OnboardingStore m_onboarding;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: vellumor_crash_writer FOLDER FIRST\n", stderr);
        return 2;
    }
    Writer writer(argv[1]);
    writer.writeForEver(std::atoi(argv[2]));
}
