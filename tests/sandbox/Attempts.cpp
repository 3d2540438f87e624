#include "tests/sandbox/Attempts.h"

#include <seccomp.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wordexp.h>

#include <cerrno>
#include <filesystem>
#include <sstream>
#include <vector>

namespace {

// Part of the program, as no file may be read any more when it is needed.
constexpr const char* attempts =
#include "tests/sandbox/attempts.txt"
    ;

/// Splits the text into words, and fills in the home folder and variables.
std::vector<std::string> readAsShell(const std::string& text) {
    wordexp_t words{};
    wordexp(text.c_str(), &words, WRDE_NOCMD);
    std::vector<std::string> copies(words.we_wordv, words.we_wordv + words.we_wordc);
    wordfree(&words);
    return copies;
}

/// Makes a system call. What copies the process ends the copy.
long made(const std::string& name, const long (&arguments)[6]) {
    const int number = seccomp_syscall_resolve_name(name.c_str());
    const auto& [a, b, c, d, e, f] = arguments;
    // The copy that vfork makes uses this stack as well, and may not return from a function.
    const long result = name == "vfork" ? vfork() : syscall(number, a, b, c, d, e, f);
    if (result == 0 && name.ends_with("fork"))
        _exit(0);
    return result;
}

/// Makes a system call, and takes away again what that has made. Returns 0, or an errno value.
int errorOf(const std::string& name, const std::vector<std::string>& words) {
    long arguments[6] = {};
    for (std::size_t i = 0; i < words.size(); ++i)
        arguments[i] = words[i][0] == '/' ? reinterpret_cast<long>(words[i].c_str())
                                          : std::stol(words[i], nullptr, 0);
    const int result = static_cast<int>(made(name, arguments));
    if (result < 0)
        return errno;
    if (name.ends_with("fork"))
        waitpid(result, nullptr, 0);
    if (name == "openat" || name == "socket")
        close(result);
    for (const std::string& word : words)
        if (word.find("/quelvo-attempt-") != std::string::npos)
            std::filesystem::remove(word);
    return 0;
}

}  // namespace

std::string whatCanBeDone() {
    std::string could;
    bool anyRefused = false;
    std::istringstream lines(attempts);
    for (std::string refusal, name, words; std::getline(lines >> refusal >> name, words);) {
        if (refusal == "#" || seccomp_syscall_resolve_name(name.c_str()) < 0)
            continue;
        const int error = errorOf(name, readAsShell(words));
        const bool isRefused =
            refusal.starts_with("ENOSYS") ? error == ENOSYS : error == EPERM || error == EACCES;
        anyRefused |= isRefused && !refusal.ends_with('?');
        if (!isRefused)
            could.append(could.empty() ? "" : ", ").append(name).append(words);
    }
    if (!anyRefused)
        return "everything";
    return could.empty() ? "nothing" : could;
}
