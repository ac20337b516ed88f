// Host stand-in for <cutils/ashmem.h>, as far as the library uses it. A Linux host has no ashmem
// driver: only memory files (memfd) have a region size here.
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// The size of the shared-memory region behind fd, or -1 with errno set when fd is not one.
int ashmem_get_size_region(int fd);

#ifdef __cplusplus
}
#endif
