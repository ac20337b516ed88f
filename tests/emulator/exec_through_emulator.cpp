// Cross builds only (-Wl,--wrap=execv): threadsafe death tests re-execute the test binary, which
// the build machine's kernel may refuse to run; then the emulator runs it. This runs in the cloned
// child of a multi-threaded process: no allocation, no lock.
#include <errno.h>
#include <stddef.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

extern "C" int __real_execv(const char* path, char* const argv[]);

extern "C" int __wrap_execv(const char* path, char* const argv[]) {
    __real_execv(path, argv);
    if (errno != ENOEXEC) return -1;

    // CWB_EMULATOR: the emulator's absolute path, then its options, separated by spaces.
    char words[sizeof(CWB_EMULATOR)];
    memcpy(words, CWB_EMULATOR, sizeof(words));
    constexpr size_t kMaxArgs = 64;
    char* args[kMaxArgs];
    size_t n = 0;
    char* save = nullptr;
    for (char* word = strtok_r(words, " ", &save); word != nullptr && n < kMaxArgs;
         word = strtok_r(nullptr, " ", &save)) {
        args[n++] = word;
    }
    if (n < kMaxArgs) args[n++] = const_cast<char*>(path);
    for (size_t i = 1; argv[0] != nullptr && argv[i] != nullptr && n < kMaxArgs; ++i) {
        args[n++] = argv[i];
    }
    if (n == 0 || n == kMaxArgs) {
        errno = E2BIG;
        return -1;
    }
    args[n] = nullptr;
    // The child is expected to die: no core files from qemu for the guest and for itself.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    return __real_execv(args[0], args);
}
