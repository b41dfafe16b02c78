// A program that crashes deep in functions named as the real one's are, and says in which: for the
// tests of what becomes of a crash. Its first argument is the kind of fault.

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// On standard output, in the form in which systemd-coredump tells the journal of a stack.
void printStack()
{
    std::array<void*, 64> addresses{};
    const int count = ::backtrace(addresses.data(), static_cast<int>(addresses.size()));
    std::printf("Stack trace of thread %d:\n", static_cast<int>(::getpid()));
    int number = 0;
    for (int i = 3; i < count; ++i) { // behind this function, the handler and the kernel's frame
        Dl_info info{};
        void* address = addresses[static_cast<std::size_t>(i)];
        ::dladdr(address, &info);
        const char* slash = info.dli_fname == nullptr ? nullptr : std::strrchr(info.dli_fname, '/');
        const char* file = slash == nullptr ? info.dli_fname : slash + 1;
        std::printf(
            "#%-2d 0x%016lx %s (%s + 0x%lx)\n", number++, reinterpret_cast<unsigned long>(address),
            info.dli_sname == nullptr ? "n/a" : info.dli_sname, file == nullptr ? "n/a" : file,
            reinterpret_cast<unsigned long>(address) -
                reinterpret_cast<unsigned long>(info.dli_fbase));
    }
    std::fflush(stdout);
}

// Comes back to the fault, which then ends the process as the system's own way is.
void onFault(int signal)
{
    printStack();
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

} // namespace

namespace vellumor {

class Poller {
public:
    void tick(int depth);
};

class UsagePipeline {
public:
    void fetch(const char* kind);
};

__attribute__((noinline)) void UsagePipeline::fetch(const char* kind)
{
    if (std::strcmp(kind, "abort") == 0)
        std::abort();
    auto* volatile nowhere = static_cast<int*>(nullptr);
    *nowhere = 1;
}

__attribute__((noinline)) void Poller::tick(int depth)
{
    if (depth > 0)
        tick(depth - 1);
    else
        UsagePipeline().fetch("memory");
}

} // namespace vellumor

int main(int argc, char** argv)
{
    const char* kind = argc > 1 ? argv[1] : "";
    std::array<void*, 1> warmUp{};
    (void)::backtrace(warmUp.data(), 1); // loads what it needs, which a handler may not
    std::signal(SIGSEGV, onFault);
    std::signal(SIGABRT, onFault);
    if (std::strcmp(kind, "abort") == 0)
        vellumor::UsagePipeline().fetch(kind);
    vellumor::Poller().tick(2);
    return 0;
}
