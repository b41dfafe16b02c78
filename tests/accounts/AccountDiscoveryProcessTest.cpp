#include "accounts/AccountDiscovery.h"
#include "accounts/KeychainReader.h"
#include "support/FakeClock.h"
#include "support/FakeKeyring.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>

namespace vellumor::accountDiscoveryProcessTest {
namespace {

constexpr int foundAll = 7;

// From here on, starting a process or a program ends this one with SIGSYS.
bool forbidProcesses()
{
    constexpr auto number = offsetof(seccomp_data, nr);
    const auto endOn = [](unsigned call, unsigned char further) -> sock_filter {
        return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, further, 0);
    };
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        endOn(__NR_clone, 5),
        endOn(__NR_clone3, 4),
#ifdef __NR_fork // younger machines have no such calls of their own
        endOn(__NR_fork, 3),
        endOn(__NR_vfork, 2),
#else
        endOn(__NR_clone, 3),
        endOn(__NR_clone, 2),
#endif
        endOn(__NR_execve, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const sock_fprog program = {static_cast<unsigned short>(std::size(rules)), rules};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

int statusOf(const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(forbidProcesses() ? work() : 1);
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(AccountDiscovery, aScanStartsNoProcess)
{
    const test::TempFolder home;
    for (const char* dir : {".claude", ".claude-a", ".claude-b"})
        home.put(std::string(dir) + "/.credentials.json",
                 R"({"claudeAiOauth":{"accessToken":"example-token"}})");
    test::FakeKeyring keyring;
    const test::FakeClock clock;
    ServiceDirectories directories(home.path());
    const KeychainReader keychain(directories, keyring, clock);
    const int status = statusOf([&] {
        const auto result = AccountDiscovery::live({}, home.path(), directories, keychain).run();
        return result.facts.size() == 3 ? foundAll : 2;
    });
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), foundAll);
}

TEST(AccountDiscovery, theWatchOverProcessesSeesOne)
{
    const int status = statusOf([] { return ::fork() == 0 ? 0 : foundAll; });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGSYS);
}

} // namespace
} // namespace vellumor::accountDiscoveryProcessTest
