#include "Ratio.h"

#include "base/FileHandle.h"
#include "store/FileStore.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace vellumor::bench {

void writeBare(const std::string& folder, const std::string& bytes)
{
    const std::string temp = folder + "/.bare.tmp";
    const std::string target = folder + "/bare.json";
    const auto check = [](bool good) {
        if (!good)
            std::abort();
    };
    {
        const FileHandle file(::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        check(::write(file.get(), bytes.data(), bytes.size()) ==
              static_cast<ssize_t>(bytes.size()));
        check(::fsync(file.get()) == 0);
    }
    check(std::rename(temp.c_str(), target.c_str()) == 0);
    const FileHandle opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    check(::fsync(opened.get()) == 0);
}

std::vector<Comparison> fileWriting(const std::string& folder)
{
    const std::string bytes(8192, 'x');
    return {{"file of 8192 bytes",
             [folder, bytes] {
                 if (!FileStore().write(bytes, folder + "/ours.json"))
                     std::abort();
             },
             [folder, bytes] { writeBare(folder, bytes); }, 400, 1, 1.2}};
}

} // namespace vellumor::bench
