// In-process binder NDK: reference counting and the service registry.
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <host/binder_registry.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->refs.fetch_add(1, std::memory_order_relaxed);
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder != nullptr && binder->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete binder;
    }
}

bool AIBinder_isAlive(const AIBinder* binder) {
    return binder != nullptr && binder->local != nullptr;
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr || binder->local == nullptr) return STATUS_UNEXPECTED_NULL;
    return binder->local->dump(fd, args, numArgs);
}

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, ndk::SpAIBinder> services;
    std::condition_variable added;
    binder_exception_t failure = EX_NONE;
};

Registry& registry() {
    static Registry* r = new Registry();  // never destroyed: services may outlive static teardown
    return *r;
}

}  // namespace

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr) return EX_ILLEGAL_ARGUMENT;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (r.failure != EX_NONE) return r.failure;
    AIBinder_incStrong(binder);
    r.services[instance] = ndk::SpAIBinder(binder);
    r.added.notify_all();
    return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.services.find(instance);
    if (it == r.services.end()) return nullptr;
    AIBinder_incStrong(it->second.get());
    return it->second.get();
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    if (instance == nullptr) return nullptr;
    Registry& r = registry();
    std::unique_lock<std::mutex> lock(r.mutex);
    if (!r.added.wait_for(lock, std::chrono::seconds(10),
                          [&] { return r.services.count(instance) != 0; })) {
        return nullptr;
    }
    AIBinder* binder = r.services[instance].get();
    AIBinder_incStrong(binder);
    return binder;
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t /*numThreads*/) {
    return true;
}

void ABinderProcess_startThreadPool() {}

namespace host::binder {

void resetRegistryNdk() {
    std::map<std::string, ndk::SpAIBinder> dropped;
    {
        Registry& r = registry();
        std::lock_guard<std::mutex> lock(r.mutex);
        dropped.swap(r.services);
        r.failure = EX_NONE;
    }
    // Services are released outside the lock: their destructors may look the registry up.
}

void removeService(const std::string& instance) {
    ndk::SpAIBinder dropped;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.services.find(instance);
    if (it != r.services.end()) {
        dropped = std::move(it->second);
        r.services.erase(it);
    }
}

void failAddService(binder_exception_t exception) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.failure = exception;
}

ndk::SpAIBinder lookup(const std::string& instance) {
    return ndk::SpAIBinder(AServiceManager_checkService(instance.c_str()));
}

}  // namespace host::binder
