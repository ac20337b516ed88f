// Host stand-in for <android/binder_process.h>: the binder thread pool of the calling thread's
// host process (see <host/binder_process.h>). Its threads start as transactions arrive, up to the
// maximum; starting the pool starts all of them at once.
#pragma once

#include <cstdint>

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
void ABinderProcess_startThreadPool();
