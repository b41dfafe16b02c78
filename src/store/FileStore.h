#pragma once

#include "base/JsonForward.h"
#include "store/FileCalls.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vellumor {

// How every file of the program reaches the disk. A reader never sees a half-written file, nothing
// written is readable by another user, a power cut leaves the old or the new file whole, and
// cooperating programs can update one JSON file without a lock. Stateless: one instance serves all
// threads. No failure is reported but by the results below.
class FileStore {
public:
    static constexpr mode_t filePermissions = 0600;
    static constexpr mode_t dirPermissions = 0700;

    // What identifies one state of a file. All zero where its attributes cannot be read.
    struct Fingerprint {
        bool exists = false;
        std::uint64_t fileNumber = 0;
        std::int64_t size = 0;
        double modified = 0.0; // seconds since 1970
        bool operator==(const Fingerprint&) const = default;
    };

    enum class UpdateOutcome {
        written,            // replaced, and nobody had come between
        noChange,           // `delta` gave nothing to write
        refusedNewerSchema, // the file is of a newer version than the caller knows; it is left
                            // alone
        lastWriterWins,     // the attempts ran out; the last write went through all the same
        failed,
    };

    using Delta = std::function<std::optional<Json>(const Json&)>;
    using AfterRead = std::function<void(int attempt)>;

    struct Update {
        std::optional<int> currentSchemaVersion; // absent: never refuses
        std::string schemaVersionKey = "schemaVersion";
        int maxAttempts = 3; // at least one attempt is made
        AfterRead
            onAfterRead; // between the read and the compare; for tests that provoke a conflict
    };

    FileStore();
    // `calls` outlives the store.
    explicit FileStore(const FileCalls& calls);

    // Makes the folder with all missing parents, or sets the mode of one that is there. A link is
    // used, but the folder behind it keeps its mode.
    void ensureDirectory(const std::string& path) const;

    // For a file that only this process writes: replaces it whole. True when it stands.
    bool write(std::string_view bytes, const std::string& path) const;

    // For a file that others write too: read, change, compare, rename. `delta` gets the object as
    // it stands (empty when the file is missing or broken), gives the new one or nothing, and may
    // be called maxAttempts + 1 times. Sleeps the caller up to 12 ms after a lost race.
    UpdateOutcome updateJSONObject(const std::string& path, const Update& update,
                                   const Delta& delta) const;

    // Sets every folder below and including `root` to dirPermissions and every other entry to
    // filePermissions. Links are neither changed nor followed.
    void healTree(const std::string& root) const;

    [[nodiscard]] Fingerprint fingerprint(const std::string& path) const;

    // `delta` over `base`, two levels deep: a null removes, an object over an object merges its
    // fields, where a null removes again and anything else replaces.
    [[nodiscard]] static Json mergeAtKeyLevel(Json base, const Json& delta);

private:
    [[nodiscard]] std::optional<std::string> writeTemp(std::string_view bytes,
                                                       const std::string& path) const;
    [[nodiscard]] bool writeAll(int file, std::string_view bytes) const;
    [[nodiscard]] bool renameItem(const std::string& from, const std::string& to) const;
    [[nodiscard]] std::optional<UpdateOutcome> attemptUpdate(const std::string& path,
                                                             const Update& update, int attempt,
                                                             const Delta& delta) const;

    const FileCalls& m_calls;
};

} // namespace vellumor
