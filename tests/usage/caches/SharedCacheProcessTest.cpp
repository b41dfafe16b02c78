#include "usage/caches/SharedCache.h"

#include "base/Format.h"
#include "base/Json.h"
#include "store/AccountFiles.h"
#include "store/FileReader.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace vellumor::sharedCacheProcessTest {

namespace {

using Outcome = FileStore::UpdateOutcome;

constexpr int none = -1;
constexpr int operationsInAll = 10000;
constexpr std::uint64_t most = 18446744073709551615U;
const std::string accounts[] = {"/a", "/b", "/c"};

// What a file of the cache says: the number of the operation from which each part stems.
struct State {
    int reading = none;
    int addition = none; // the keys that only the foreign program knows
    int backoff = none;
    auto operator<=>(const State&) const = default;
};

Instant momentOf(int number)
{
    return Instant(std::chrono::seconds(1772357400 + number));
}

Usage readingOf(int number)
{
    Usage usage;
    usage.fetchedAt = momentOf(number);
    usage.windows.resize(1);
    usage.windows[0].kind = "session";
    usage.windows[0].percent = number;
    return usage;
}

Json additionOf(int number)
{
    return {{"first", number}, {"list", {{{"most", most}, {"tenth", 0.1}}, Json(), number}}};
}

// Nothing when the bytes are no whole file, or their parts do not fit one another.
std::optional<State> stateIn(const std::string& bytes)
{
    const auto json = parseJson(bytes);
    const auto decoded = UsageCacheFile::decode(json.value_or(Json()));
    const auto* file = std::get_if<UsageCacheFile>(&decoded);
    if (file == nullptr || file->windows.size() != 1)
        return std::nullopt;
    State state{};
    state.reading = static_cast<int>(file->windows[0].percent);
    if (file->fetchedAt != momentOf(state.reading))
        return std::nullopt;
    if (file->backoffUntil)
        state.backoff = static_cast<int>((*file->backoffUntil - momentOf(0)).count() / 1'000'000);
    state.addition = json->value("revision", none);
    const bool isAdded = state.addition != none;
    if (json->contains("added") != isAdded ||
        (isAdded && json->at("added") != additionOf(state.addition)))
        return std::nullopt;
    return state;
}

enum class Kind { write, backoff, foreign };

// One file replaced by one operation.
struct Step {
    Kind kind = Kind::write;
    std::size_t account = 0;
    int number = none;  // of the operation
    int backoff = none; // what the operation was to set
    int begunAt = 0;    // how many steps there were when the operation began
    bool isWhole = false;
    State state{};
};

// The steps of all processes, in the order in which the files came to stand.
struct Journal {
    pthread_mutex_t mutex{};
    int count = 0;
    Step steps[operationsInAll + 1];

    Journal()
    {
        pthread_mutexattr_t attributes;
        ::pthread_mutexattr_init(&attributes);
        ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
        ::pthread_mutex_init(&mutex, &attributes);
        ::pthread_mutexattr_destroy(&attributes);
    }
    int countNow()
    {
        ::pthread_mutex_lock(&mutex);
        const int now = count;
        ::pthread_mutex_unlock(&mutex);
        return now;
    }
};

// A journal in memory that the processes share.
class SharedJournal {
public:
    SharedJournal()
        : m_memory(::mmap(nullptr, sizeof(Journal), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        if (m_memory == MAP_FAILED)
            std::abort();
        m_journal = new (m_memory) Journal;
    }
    SharedJournal(const SharedJournal&) = delete;
    SharedJournal& operator=(const SharedJournal&) = delete;
    ~SharedJournal() { ::munmap(m_memory, sizeof(Journal)); }
    [[nodiscard]] Journal& operator*() const { return *m_journal; }

private:
    void* m_memory;
    Journal* m_journal = nullptr;
};

// The real calls; each rename is a step of the journal. In place of waiting for the disk, others
// are let come between.
class RecordingCalls final : public FileCalls {
public:
    explicit RecordingCalls(Journal& journal)
        : m_journal(journal)
    {
    }
    void begin(const Step& step)
    {
        m_step = step;
        m_step.begunAt = m_journal.countNow();
    }
    [[nodiscard]] ssize_t write(int file, const void* bytes, std::size_t count) const override
    {
        const auto state = stateIn(std::string(static_cast<const char*>(bytes), count));
        m_step.isWhole = state.has_value();
        m_step.state = state.value_or(State());
        return FileCalls::write(file, bytes, count);
    }
    [[nodiscard]] int fsync(int) const override
    {
        for (int i = 0; i < 10; ++i)
            std::this_thread::yield();
        return 0;
    }
    [[nodiscard]] int rename(const char* from, const char* to) const override
    {
        ::pthread_mutex_lock(&m_journal.mutex);
        const int result = FileCalls::rename(from, to);
        if (result == 0 && m_journal.count < operationsInAll)
            m_journal.steps[m_journal.count++] = m_step;
        ::pthread_mutex_unlock(&m_journal.mutex);
        return result;
    }

private:
    Journal& m_journal;
    mutable Step m_step; // the calls of the seam are const
};

// This program: a reading in three operations, and a backoff, or none, in the others.
int work(Journal& journal, const std::string& dir, int firstNumber, int operations)
{
    RecordingCalls calls(journal);
    const FileStore files(calls);
    SharedCache cache(files, dir);
    std::mt19937 random(static_cast<unsigned>(firstNumber));
    for (int number = firstNumber; number < firstNumber + operations; ++number) {
        const std::size_t account = random() % std::size(accounts);
        const bool isBackingOff = random() % 4 != 0;
        const auto until = isBackingOff ? std::optional(momentOf(number)) : std::nullopt;
        const Kind kind = random() % 3 == 0 ? Kind::write : Kind::backoff;
        calls.begin({kind, account, number, isBackingOff ? number : none});
        if (kind == Kind::write) {
            cache.write(readingOf(number), accounts[account], until);
            continue;
        }
        const Outcome outcome = cache.setBackoff(until, accounts[account]);
        if (outcome != Outcome::written && outcome != Outcome::lastWriterWins)
            return 1;
    }
    return 0;
}

// Another program: adds keys of its own to what it finds, and replaces the file without a look.
int workAsForeigner(Journal& journal, const std::string& dir, int firstNumber, int operations)
{
    RecordingCalls calls(journal);
    std::mt19937 random(static_cast<unsigned>(firstNumber));
    for (int number = firstNumber; number < firstNumber + operations; ++number) {
        const std::size_t account = random() % std::size(accounts);
        calls.begin({Kind::foreign, account, number});
        const std::string path = AccountFiles::path(dir, accounts[account]);
        const FileContents contents = readFile(path);
        if (contents.status != ReadStatus::ok || !stateIn(contents.bytes))
            return 1;
        Json json = Json::parse(contents.bytes);
        json["revision"] = number;
        json["added"] = additionOf(number);
        const std::string bytes = json.dump();
        const std::string temp = path + ".new";
        const int file = calls.create(temp.c_str(), 0600);
        const bool isWritten = calls.write(file, bytes.data(), bytes.size()) > 0;
        ::close(file);
        if (!isWritten || calls.rename(temp.c_str(), path.c_str()) != 0)
            return 1;
    }
    return 0;
}

pid_t inAnotherProcess(const std::function<int()>& action)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(action());
    return child;
}

struct SharedCacheProcessTest : testing::Test {
    using Seen = std::set<std::pair<std::size_t, State>>;

    test::TempFolder folder;
    std::string dir = folder.file("usage-cache");
    SharedJournal shared;
    Journal& journal = *shared;

    SharedCacheProcessTest()
    {
        const FileStore files;
        for (const std::string& account : accounts)
            SharedCache(files, dir).write(readingOf(0), account, std::nullopt);
    }

    std::optional<State> found(std::size_t account) const
    {
        const FileContents contents = readFile(AccountFiles::path(dir, accounts[account]));
        return contents.status == ReadStatus::ok ? stateIn(contents.bytes) : std::nullopt;
    }

    // Reads at every third step, until the processes have ended.
    Seen seenWhile(std::vector<pid_t> children) const
    {
        Seen seen;
        int turn = 0;
        while (!children.empty()) {
            int status = 0;
            if (::waitpid(children.back(), &status, WNOHANG) != 0) {
                EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
                children.pop_back();
            }
            if (journal.countNow() < 3 * turn) {
                std::this_thread::yield();
                continue;
            }
            const std::size_t account = static_cast<std::size_t>(turn++) % std::size(accounts);
            const auto state = found(account);
            EXPECT_TRUE(state) << "a torn file";
            seen.emplace(account, state.value_or(State()));
        }
        return seen;
    }
};

// Replays the journal: what each step has to be, after what stood there before it.
struct Replay {
    std::map<std::size_t, State> standing = {
        {0, {0, none, none}}, {1, {0, none, none}}, {2, {0, none, none}}};
    std::map<std::size_t, int> lastStep = {{0, -1}, {1, -1}, {2, -1}};
    std::set<std::pair<std::size_t, State>> states = {
        {0, standing[0]}, {1, standing[1]}, {2, standing[2]}};
    int undisturbed = 0; // operations in which nobody came between
    int backoffs = 0;
    int overtaken = 0; // backoffs that have put back what another had just replaced

    void add(int index, const Step& step)
    {
        EXPECT_TRUE(step.isWhole);
        const State& before = standing[step.account];
        const bool isUndisturbed = lastStep[step.account] < step.begunAt;
        undisturbed += isUndisturbed ? 1 : 0;
        State expected = step.state;
        if (step.kind == Kind::write) {
            expected = {step.number, none, step.backoff};
        } else if (step.kind == Kind::backoff) {
            if (isUndisturbed)
                expected = before;
            expected.backoff = step.backoff;
            ++backoffs;
            const bool isKept =
                step.state.reading == before.reading && step.state.addition == before.addition;
            overtaken += isKept ? 0 : 1;
        } else {
            if (isUndisturbed)
                expected = before;
            expected.addition = step.number;
        }
        EXPECT_EQ(step.state, expected) << "step " << index;
        standing[step.account] = step.state;
        lastStep[step.account] = index;
        states.emplace(step.account, step.state);
    }
};

} // namespace

TEST_F(SharedCacheProcessTest, manyWritersTearNothingAndLoseNoBackoffAndNoForeignKey)
{
    const auto seen =
        seenWhile({inAnotherProcess([&] { return work(journal, dir, 10000, 3400); }),
                   inAnotherProcess([&] { return work(journal, dir, 20000, 3300); }),
                   inAnotherProcess([&] { return workAsForeigner(journal, dir, 30000, 3300); })});
    ASSERT_EQ(journal.count, operationsInAll);
    Replay replay;
    for (int i = 0; i < journal.count; ++i)
        replay.add(i, journal.steps[i]);
    for (std::size_t account = 0; account < std::size(accounts); ++account)
        EXPECT_EQ(found(account), replay.standing[account]);
    for (const auto& each : seen)
        EXPECT_TRUE(replay.states.contains(each));
    EXPECT_GT(seen.size(), 100U);
    EXPECT_EQ(test::namesIn(dir).size(), std::size(accounts));
    EXPECT_GT(replay.undisturbed, 1000);
    // Between the last look at the file and the rename another may still come: one backoff in forty
    // where all write without a pause, as here; without the look it is one in five.
    EXPECT_LE(replay.overtaken, replay.backoffs / 10);
}

} // namespace vellumor::sharedCacheProcessTest
