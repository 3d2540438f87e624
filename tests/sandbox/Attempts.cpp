#include "tests/sandbox/Attempts.h"

#include <fcntl.h>
#include <seccomp.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>

namespace {

std::string atHome(const char* name) {
    return std::string(std::getenv("HOME")) + '/' + name;
}

/// What is not there yet.
std::string fresh(const std::string& folder = std::getenv("HOME")) {
    return folder + "/quelvo-attempt-" + std::to_string(getpid());
}

/// Takes away again what a call has made.
long made(long result, const std::string& path) {
    std::error_code ignored;
    if (result >= 0)
        std::filesystem::remove(path, ignored);
    return result;
}

long opened(const std::string& path, int flags) {
    const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (file >= 0)
        close(file);
    return file;
}

long madeFile(const std::string& folder) {
    const std::string path = fresh(folder);
    return made(opened(path, O_CREAT | O_EXCL | O_WRONLY), path);
}

long startedShell() {
    const char* words[] = {"sh", "-c", ":", nullptr};
    pid_t started = 0;
    errno = posix_spawn(&started, "/bin/sh", nullptr, nullptr, const_cast<char**>(words), nullptr);
    return errno == 0 ? waitpid(started, nullptr, 0) : -1;
}

/// Of a program that no folder holds, and that is none: it ends here in no case.
long startedFromMemory() {
    const int file = memfd_create("attempt", MFD_CLOEXEC);
    const char* words[] = {"attempt", nullptr};
    if (write(file, "none", 4) == 4)
        fexecve(file, const_cast<char**>(words), environ);
    const int error = errno;
    close(file);
    errno = error;
    return -1;
}

/// `child` is what a call has returned in the parent and in the child.
long copied(long child) {
    if (child == 0)
        _exit(0);
    return child > 0 ? waitpid(static_cast<pid_t>(child), nullptr, 0) : child;
}

long usedSocket(long family, int protocol) {
    const long number = syscall(SYS_socket, family, SOCK_DGRAM, protocol);
    if (number >= 0)
        close(static_cast<int>(number));
    return number;
}

struct Attempt {
    const char* what;
    long (*act)();
};

constexpr long beyond = 1L << 32;  // what the kernel doesn't look at hides nothing

const Attempt attempts[] = {
    {"write a file at home", [] { return madeFile(std::getenv("HOME")); }},
    {"write a file in /tmp", [] { return madeFile("/tmp"); }},
    {"write a file among the devices", [] { return madeFile("/dev/shm"); }},
    {"write a file beside the program",
     [] { return madeFile(std::filesystem::read_symlink("/proc/self/exe").parent_path()); }},
    {"write into a file", [] { return opened(atHome(".fonts/font"), O_WRONLY); }},
    {"empty a file", [] { return opened(atHome(".fonts/font"), O_RDONLY | O_TRUNC); }},
    {"read a private file", [] { return opened(atHome("letter"), O_RDONLY); }},
    {"list the home folder", [] { return opened(atHome(""), O_RDONLY | O_DIRECTORY); }},
    {"make a folder", [] { return made(mkdir(fresh().c_str(), 0700), fresh()); }},
    {"make a link", [] { return made(symlink("/", fresh().c_str()), fresh()); }},
    {"make a pipe", [] { return made(mkfifo(fresh().c_str(), 0600), fresh()); }},
    {"rename a file",
     [] { return long{rename(atHome("letter").c_str(), atHome("letter").c_str())}; }},
    // Neither can be, but who may not do it learns nothing else.
    {"remove a file", [] { return long{unlink(atHome(".fonts").c_str())}; }},
    {"remove a folder", [] { return long{rmdir(atHome(".fonts").c_str())}; }},
    {"start a shell", startedShell},
    {"start a program from memory", startedFromMemory},
#ifdef SYS_fork
    {"fork", [] { return copied(syscall(SYS_fork)); }},
#endif
    {"vfork", [] { return copied(vfork()); }},
    {"use the network", [] { return usedSocket(AF_INET, 0); }},
    {"use the network, hidden", [] { return usedSocket(AF_INET | beyond, 0); }},
    {"use the network, IPv6", [] { return usedSocket(AF_INET6, 0); }},
    {"use a later kind of socket", [] { return usedSocket(AF_VSOCK, 0); }},
    {"look at the routes", [] { return usedSocket(AF_NETLINK, 0); }},
};

// Calls that do nothing, or fail for another reason than that they are refused. The words behind
// one are its arguments: numbers, "path" (of a file that may be read) or "nobody" (no process).
constexpr const char* calls[] = {
    "open path 01000", "truncate path", "chmod path 0600", "fchmod -1", "fchmodat -100 path 0600",
    "chown path -1 -1", "fchown -1", "lchown path -1 -1", "fchownat -100 path -1 -1", "setxattr",
    "lsetxattr", "fsetxattr -1", "removexattr", "lremovexattr", "fremovexattr -1", "utime path",
    "utimes path", "futimesat -100 path", "utimensat -100 path", "execve", "execveat -1",
    "ptrace 2 nobody", "process_vm_readv nobody", "process_vm_writev nobody", "pidfd_getfd -1",
    "kill nobody", "tkill nobody", "tgkill nobody nobody", "rt_sigqueueinfo nobody",
    "rt_tgsigqueueinfo nobody nobody", "pidfd_send_signal -1", "clone 0x800", "clone3", "openat2",
    "prlimit64 nobody", "fcntl -1 8", "fcntl -1 15", "fcntl -1 10", "ioctl -1 0x8901",
    "ioctl -1 0x8902",
    // TIOCSTI and TIOCLINUX, with what the kernel doesn't look at
    "ioctl -1 0x100005412", "ioctl -1 0x10000541c"};

// Those that some kernels and containers refuse anyway, to whoever isn't the administrator or to
// all.
constexpr const char* rareCalls[] = {
    "add_key",       "request_key",    "keyctl -1",       "unshare",         "setns -1",
    "userfaultfd 3", "io_uring_setup", "perf_event_open", "init_module",     "finit_module -1",
    "delete_module", "bpf -1",         "fchmodat2 -100",  "setxattrat -100", "removexattrat -100"};

/// Whether a call is refused; nothing when this processor has none, or it is newer than the
/// library.
std::optional<bool> isRefused(const std::string& call) {
    static const std::string path = atHome(".fonts/font");
    std::istringstream words(call);
    std::string word;
    words >> word;
    const int number = seccomp_syscall_resolve_name(word.c_str());
    if (number < 0)
        return std::nullopt;
    // Some are refused by denying that there is such a call.
    const bool denied = word == "clone3" || word == "openat2" || word == "io_uring_setup";
    long arguments[6] = {};
    for (long* argument = arguments; words >> word; ++argument)
        *argument = word == "path"     ? reinterpret_cast<long>(path.c_str())
                    : word == "nobody" ? INT_MAX
                                       : std::stol(word, nullptr, 0);
    const auto& [a, b, c, d, e, f] = arguments;
    return syscall(number, a, b, c, d, e, f) < 0 &&
           (denied ? errno == ENOSYS : errno == EPERM || errno == EACCES);
}

}  // namespace

std::string whatCanBeDone() {
    std::string could;
    bool refused = false;
    const auto note = [&](const std::string& what, bool isRefused) {
        if (!isRefused)
            could += (could.empty() ? "" : ", ") + what;
        return isRefused;
    };
    for (const auto& [what, act] : attempts)
        refused |= note(what, act() < 0 && (errno == EPERM || errno == EACCES));
    for (const char* call : calls)
        if (const auto is = isRefused(call))
            refused |= note(call, *is);
    for (const char* call : rareCalls)
        if (const auto is = isRefused(call))
            note(call, *is);
    if (!refused)
        return "everything";
    return could.empty() ? "nothing" : could;
}
