// Host stand-in for <android/binder_ibinder.h>. A binder here is an in-process, reference-counted
// handle to a local interface object; calls through it are direct virtual calls.
#pragma once

#include <android/binder_status.h>

#include <atomic>
#include <memory>
#include <string>

namespace ndk {
class ICInterface;
}

struct AIBinder {
    AIBinder(std::shared_ptr<ndk::ICInterface> iface, std::string descriptor)
        : local(std::move(iface)), descriptor(std::move(descriptor)) {}
    // Strong reference: a binder keeps its interface object alive, as libbinder_ndk does.
    std::shared_ptr<ndk::ICInterface> local;
    std::string descriptor;
    std::atomic<int32_t> refs{0};
};

void AIBinder_incStrong(AIBinder* binder);
void AIBinder_decStrong(AIBinder* binder);
bool AIBinder_isAlive(const AIBinder* binder);
// Asks the object behind binder to write its state to fd, as dumpsys does.
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);
