#pragma once

#include "store/FileCalls.h"

#include <shared_mutex>

namespace vellumor {

// The system's own calls until they are sealed; from then on nothing comes to stand on disk any
// more, and what would fails with EROFS. So what is deleted for good stays deleted, whoever still
// has something to write. Serves all threads.
class SealableFileCalls final : public FileCalls {
public:
    // Waits for the calls that are under way. Files that are open may still be written to.
    void seal();

    [[nodiscard]] int create(const char* path, mode_t mode) const override;
    [[nodiscard]] int mkdir(const char* path, mode_t mode) const override;
    [[nodiscard]] int rename(const char* from, const char* to) const override;

private:
    template <typename Call>
    [[nodiscard]] int unlessSealed(Call call) const;

    mutable std::shared_mutex m_mutex;
    bool m_isSealed = false; // guarded by m_mutex
};

} // namespace vellumor
