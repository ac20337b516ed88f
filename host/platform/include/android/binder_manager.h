// Host stand-in for <android/binder_manager.h>: one in-process service registry.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

// Registers binder under instance; the registry keeps a strong reference.
__attribute__((warn_unused_result)) binder_exception_t AServiceManager_addService(
        AIBinder* binder, const char* instance);
// Returns the registered binder with one strong reference for the caller, or null. Never waits.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_checkService(const char* instance);
// As checkService, but waits for instance to be registered. A device waits as long as it takes;
// here the wait ends after 10 seconds with null so that a host test cannot hang.
__attribute__((warn_unused_result)) AIBinder* AServiceManager_waitForService(const char* instance);
