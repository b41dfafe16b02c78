#include "store/SealableFileCalls.h"

#include <cerrno>
#include <mutex>

namespace vellumor {

void SealableFileCalls::seal()
{
    const std::unique_lock lock(m_mutex);
    m_isSealed = true;
}

template <typename Call>
int SealableFileCalls::unlessSealed(Call call) const
{
    const std::shared_lock lock(m_mutex);
    if (!m_isSealed)
        return call();
    errno = EROFS;
    return -1;
}

int SealableFileCalls::create(const char* path, mode_t mode) const
{
    return unlessSealed([&] { return FileCalls::create(path, mode); });
}

int SealableFileCalls::mkdir(const char* path, mode_t mode) const
{
    return unlessSealed([&] { return FileCalls::mkdir(path, mode); });
}

int SealableFileCalls::rename(const char* from, const char* to) const
{
    return unlessSealed([&] { return FileCalls::rename(from, to); });
}

} // namespace vellumor
