// Shared-memory region stand-in: a memory file's size is its length.
#include <cutils/ashmem.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>

extern "C" int ashmem_get_size_region(int fd) {
    struct stat st {};
    if (fstat(fd, &st) != 0) return -1;
    if (!S_ISREG(st.st_mode) || st.st_size > INT_MAX) {
        errno = ENOTTY;
        return -1;
    }
    return static_cast<int>(st.st_size);
}
