#include "picture-reader/Confinement.h"

#include "base/Descriptor.h"
#include "picture-reader/Protocol.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <linux/landlock.h>
#include <malloc.h>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The largest picture that is read, decoded whole by a library and once more by the toolkit, leaves this half empty.
constexpr rlim_t mostMemory = 1 << 30;

bool SetLimit(int resource, rlim_t most)
{
    rlimit limit{};
    if (getrlimit(static_cast<__rlimit_resource>(resource), &limit) != 0)
        return false;
    limit.rlim_max = std::min(limit.rlim_max, most);
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0;
}

// A place that does not exist needs no permission.
bool PermitReading(const Descriptor& rules, const char* path)
{
    const Descriptor place(open(path, O_PATH | O_CLOEXEC));
    if (!place.IsOpen())
        return true;
    landlock_path_beneath_attr beneath{};
    beneath.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE;
    beneath.parent_fd = place.Number();
    return syscall(SYS_landlock_add_rule, rules.Number(), LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
}

using Filter = std::unique_ptr<void, decltype(&seccomp_release)>;

template <class... Conditions> bool Permit(const Filter& filter, int call, Conditions... conditions)
{
    return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...) == 0;
}

}

bool LetGo()
{
    clearenv();
    return chdir("/") == 0 && close_range(pixelDescriptor + 1, ~0U, 0) == 0 && prctl(PR_SET_PDEATHSIG, SIGKILL) == 0
        && prctl(PR_SET_DUMPABLE, 0) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && SetLimit(RLIMIT_CORE, 0);
}

bool LimitMemory()
{
    // Threads would reserve room of their own, of which nearly nothing is used.
    mallopt(M_ARENA_MAX, 1);
    return SetLimit(RLIMIT_AS, mostMemory) && SetLimit(RLIMIT_FSIZE, 0);
}

bool ConfineToFonts()
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return version < 0 && (errno == ENOSYS || errno == EOPNOTSUPP);
    // All that the first version knows; linking and moving are refused without being named.
    constexpr std::uint64_t everyAccess = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
    landlock_ruleset_attr handled{};
    handled.handled_access_fs = everyAccess;
    const Descriptor rules(static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0)));
    const std::unique_ptr<FcStrList, decltype(&FcStrListDone)> fonts(FcConfigGetFontDirs(nullptr), FcStrListDone);
    if (!rules.IsOpen() || !fonts)
        return false;
    while (const FcChar8* const directory = FcStrListNext(fonts.get())) {
        if (!PermitReading(rules, reinterpret_cast<const char*>(directory)))
            return false;
    }
    return syscall(SYS_landlock_restrict_self, rules.Number(), 0) == 0;
}

bool FilterCalls(Files files)
{
    const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release);
    // To all threads, should a library have started one.
    if (!filter || seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) != 0)
        return false;
    // Memory, the descriptors that are open, and the own threads.
    for (const int call :
        {SCMP_SYS(read), SCMP_SYS(pread64), SCMP_SYS(readv), SCMP_SYS(write), SCMP_SYS(lseek), SCMP_SYS(close),
            SCMP_SYS(fstat), SCMP_SYS(newfstatat), SCMP_SYS(statx), SCMP_SYS(recvmsg), SCMP_SYS(poll), SCMP_SYS(ppoll),
            SCMP_SYS(eventfd2), SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise), SCMP_SYS(futex),
            SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
            SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity), SCMP_SYS(sched_getparam), SCMP_SYS(sched_getscheduler),
            SCMP_SYS(getpid), SCMP_SYS(gettid), SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep),
            SCMP_SYS(gettimeofday), SCMP_SYS(getrandom), SCMP_SYS(sysinfo), SCMP_SYS(exit), SCMP_SYS(exit_group)}) {
        if (!Permit(filter, call))
            return false;
    }
    // A picture is scaled by several threads. The C library starts one with exactly these; whoever asks for anything
    // else wants a process. What it would rather use keeps its wishes in memory, where they cannot be looked at.
    constexpr scmp_datum_t flagsOfThread = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD
        | CLONE_SYSVSEM | CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_CLEARTID;
    constexpr scmp_datum_t writing = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND | (O_TMPFILE & ~O_DIRECTORY);
    // Others of its commands signal processes, or take a file for themselves.
    for (const scmp_datum_t command : {F_GETFD, F_SETFD, F_GETFL}) {
        if (!Permit(filter, SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, command)))
            return false;
    }
    return Permit(filter, SCMP_SYS(clone), SCMP_A0(SCMP_CMP_EQ, flagsOfThread))
        && seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0
        && Permit(filter, SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME))
        && Permit(filter, SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0))
        && Permit(filter, SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0))
        && (files == Files::None || Permit(filter, SCMP_SYS(openat), SCMP_A2(SCMP_CMP_MASKED_EQ, writing, 0)))
        && seccomp_load(filter.get()) == 0;
}
