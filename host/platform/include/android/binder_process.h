// Host stand-in for <android/binder_process.h>. Calls are direct here, so there is no thread pool
// to start; a client that starts one on a device to receive callbacks works unchanged.
#pragma once

#include <cstdint>

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
void ABinderProcess_startThreadPool();
