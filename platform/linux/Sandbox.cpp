#include "platform/linux/Sandbox.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/netlink.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <system_error>

namespace platform {
namespace {

// Files: nothing may be done with any but what a row below allows. These are the rights that every
// kernel with Landlock knows. The later ones would add nothing: without that of moving a file to
// another folder nobody may, to cut one short is refused as a system call, which Debian 12's kernel
// needs, and devices are all in one place.
constexpr std::uint64_t everyRight = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
constexpr std::uint64_t onFilesAlone = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE;
constexpr std::uint64_t reading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;

struct FileRow {
    const char* path;
    std::uint64_t rights;
};

// The system's own, which is the same for all its users.
constexpr FileRow systemRows[] = {
    {"/usr", reading},                   // libraries and plug-ins, fonts, icons, translations
    {"/etc", reading},                   // the settings of these, and the time zone
    {"/var/cache/fontconfig", reading},  // or the fonts are looked through at each start
    {"/sys", reading},                   // what the kernel tells of cameras,
    {"/run/udev", reading},              // and what udev does
    // A camera's node comes with the camera, so that its folder must do. Nothing can be made there,
    // but what others have made to be written can be.
    {"/dev", reading | LANDLOCK_ACCESS_FS_WRITE_FILE},
};

// What a person chose for all programs to look like, mostly to be read only: beneath the folder
// that a variable names, or else beneath one of the home folder.
struct PersonalRows {
    const char* variable;
    const char* standard;
    std::initializer_list<const char*> names;
    std::uint64_t rights = reading;
};

constexpr PersonalRows personalRows[] = {
    // Fonts, pointers and themes in their old places.
    {"HOME", "", {".fonts", ".fonts.conf", ".fonts.conf.d", ".icons", ".themes"}},
    // The keys to the display and to the session: a file each.
    {"XAUTHORITY", "/.Xauthority", {""}},
    {"ICEAUTHORITY", "/.ICEauthority", {""}},
    {"XDG_DATA_HOME", "/.local/share", {"fonts", "icons", "themes", "color-schemes"}},
    {"XDG_CACHE_HOME", "/.cache", {"fontconfig"}},
    // A flag by which GNOME's settings tell that they have changed; who can't write it reads them
    // all anew each time, and complains.
    {"XDG_RUNTIME_DIR", "/.cache", {"dconf"}, reading | LANDLOCK_ACCESS_FS_WRITE_FILE},
    // The choice of fonts, and of the look: GNOME's (in dconf) and its kin's, KDE's, the toolkit's.
    // The last is the address of the input method.
    {"XDG_CONFIG_HOME",
     "/.config",
     {"fontconfig", "dconf", "gtk-3.0", "gtk-4.0", "kdeglobals", "kdedefaults", "kcminputrc",
      "breezerc", "Kvantum", "qt6ct", "Trolltech.conf", "ibus/bus"}},
};

// System calls: all but these are left. Of files and of other processes they do what no rule for
// files is asked about; the rest are ways into the kernel for which a window has no use. Calls that
// need the administrator's rights are not named (but for the kernel's modules), nor those that fail
// without a right for files: to mount, to make a node.
constexpr const char* refusedCalls[] = {
    // A program can also be in memory alone, where no rule for files is asked.
    "execve", "execveat",
    // Who may do what with a file, and what is noted of it.
    "truncate", "chmod", "fchmod", "fchmodat", "fchmodat2", "chown", "fchown", "lchown", "fchownat",
    "setxattr", "lsetxattr", "fsetxattr", "setxattrat", "removexattr", "lremovexattr",
    "fremovexattr", "removexattrat", "utime", "utimes", "futimesat", "utimensat",
    // Other processes, and one of its own: that could outlive the window.
    "ptrace", "process_vm_readv", "process_vm_writev", "pidfd_getfd", "kill", "tkill",
    "rt_sigqueueinfo", "rt_tgsigqueueinfo", "pidfd_send_signal", "fork", "vfork",
    // The kernel's keys, modules and programs, its namespaces, and its memory tricks.
    "add_key", "request_key", "keyctl", "init_module", "finit_module", "delete_module", "bpf",
    "perf_event_open", "unshare", "setns", "userfaultfd"};

// These hide what they do from whoever only sees the call. Libraries take the older one when the
// kernel does not know them.
constexpr const char* unknownCalls[] = {"clone3", "openat2", "io_uring_setup"};

class Descriptor {
  public:
    explicit Descriptor(long number) : number_(static_cast<int>(number)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0)
            ::close(number_);
    }

    int number() const { return number_; }

  private:
    int number_;
};

/// Lets `rights` be kept for all that is beneath `path`, or for the file there. What is not there
/// (or cannot be reached) needs no rule.
int allow(const Descriptor& rules, const std::string& path, std::uint64_t rights) {
    const Descriptor place(::open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat found {};
    if (place.number() < 0 || ::fstat(place.number(), &found) != 0)
        return 0;
    if (!S_ISDIR(found.st_mode))
        rights &= onFilesAlone;
    const landlock_path_beneath_attr rule{rights, place.number()};
    const long added =
        ::syscall(SYS_landlock_add_rule, rules.number(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    return added == 0 ? 0 : errno;
}

int allowAll(const Descriptor& rules, const PersonalRows& rows) {
    const char* named = std::getenv(rows.variable);
    const char* home = std::getenv("HOME");
    const std::string base = named != nullptr && *named == '/' ? named
                             : home != nullptr && *home == '/' ? std::string(home) + rows.standard
                                                               : std::string();
    int status = 0;
    for (const char* name : rows.names)
        if (status == 0 && !base.empty())
            status = allow(rules, *name == '\0' ? base : base + '/' + name, rows.rights);
    return status;
}

/// Returns 0, or an errno value: ENOSYS and EOPNOTSUPP when the kernel has no such rules.
int giveUpFiles() {
    // Nobody may give up rights who could still gain others by starting a program.
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return errno;
    const landlock_ruleset_attr handled{everyRight};
    const Descriptor rules(::syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
    if (rules.number() < 0)
        return errno;
    int status = 0;
    for (const FileRow& row : systemRows)
        if (status == 0)
            status = allow(rules, row.path, row.rights);
    for (const PersonalRows& rows : personalRows)
        if (status == 0)
            status = allowAll(rules, rows);
    if (status == 0 && ::syscall(SYS_landlock_restrict_self, rules.number(), 0) != 0)
        status = errno;
    return status;
}

/// The list of refused calls. What fails is kept until the end, when it comes into force.
class Calls {
  public:
    /// Refuses a call, if an argument is as said. A call that this processor has not, or that is
    /// newer than the library, is left out.
    void refuse(const char* name, unsigned error, std::initializer_list<scmp_arg_cmp> when = {}) {
        const int call = seccomp_syscall_resolve_name(name);
        if (status_ == 0 && call != __NR_SCMP_ERROR)
            status_ = seccomp_rule_add_array(list_.get(), SCMP_ACT_ERRNO(error), call,
                                             static_cast<unsigned>(when.size()), when.begin());
    }

    /// Returns 0, or an errno value.
    int enforce() { return -(status_ == 0 ? seccomp_load(list_.get()) : status_); }

  private:
    struct Release {
        void operator()(void* list) const { seccomp_release(list); }
    };
    std::unique_ptr<void, Release> list_{seccomp_init(SCMP_ACT_ALLOW)};
    int status_ = list_ ? 0 : -ENOMEM;
};

/// What an argument (from 0) is like: compared with a number, or masked by it and then compared.
constexpr scmp_arg_cmp argument(unsigned which, scmp_compare how, scmp_datum_t number,
                                scmp_datum_t masked = 0) {
    return {which, how, number, masked};
}

/// The half of an argument that the kernel looks at is this number.
constexpr scmp_arg_cmp lowerHalf(unsigned which, int number) {
    return argument(which, SCMP_CMP_MASKED_EQ, UINT32_MAX, static_cast<scmp_datum_t>(number));
}

/// No network: only the sockets of this machine are left, and the one for news of devices.
void refuseNetworks(Calls& calls) {
    for (scmp_datum_t family = AF_UNSPEC; family < scmp_datum_t{AF_NETLINK}; ++family)
        if (family != AF_UNIX)
            calls.refuse("socket", EPERM, {argument(0, SCMP_CMP_EQ, family)});
    calls.refuse("socket", EPERM, {argument(0, SCMP_CMP_GT, AF_NETLINK)});
    calls.refuse(
        "socket", EPERM,
        {argument(0, SCMP_CMP_EQ, AF_NETLINK), argument(2, SCMP_CMP_NE, NETLINK_KOBJECT_UEVENT)});
}

/// What of a call that is needed is not.
void refuseUses(Calls& calls) {
    calls.refuse("clone", EPERM, {argument(0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0)});
    const auto self = static_cast<scmp_datum_t>(::getpid());
    calls.refuse("tgkill", EPERM, {argument(0, SCMP_CMP_NE, self)});
    // Limits of another process, and signals to it when a file has news.
    calls.refuse("prlimit64", EPERM, {argument(0, SCMP_CMP_NE, 0)});
    for (const int command : {F_SETOWN, F_SETOWN_EX, F_SETSIG})
        calls.refuse("fcntl", EPERM, {lowerHalf(1, command)});
    // A file that may be read would be emptied, for all that the kernel of Debian 12 minds.
    calls.refuse("open", EPERM, {argument(1, SCMP_CMP_MASKED_EQ, O_TRUNC, O_TRUNC)});
    calls.refuse("openat", EPERM, {argument(2, SCMP_CMP_MASKED_EQ, O_TRUNC, O_TRUNC)});
    // Such signals by another name, and typing into the terminal that the program was started from.
    for (const int request : {FIOSETOWN, SIOCSPGRP, TIOCSTI, TIOCLINUX})
        calls.refuse("ioctl", EPERM, {lowerHalf(1, request)});
}

int giveUpCalls() {
    Calls calls;
    for (const char* name : refusedCalls)
        calls.refuse(name, EPERM);
    for (const char* name : unknownCalls)
        calls.refuse(name, ENOSYS);
    refuseNetworks(calls);
    refuseUses(calls);
    return calls.enforce();
}

}  // namespace

std::vector<std::string> enterSandbox() {
    std::vector<std::string> kept;
    const auto note = [&](const char* what, int status) {
        if (status != 0)
            kept.push_back(what + std::generic_category().message(status));
    };
    note("The rights to files can't be given up: ", giveUpFiles());
    note("The rights to system calls can't be given up: ", giveUpCalls());
    return kept;
}

}  // namespace platform
