// The in-process binder: local binders and proxies, processes with their binder threads,
// transactions, death notifications and the service manager.
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <host/binder_process.h>
#include <host/binder_registry.h>
#include <unistd.h>

#include <chrono>

#include "binder_internal.h"

struct AIBinder_Weak {
    std::shared_ptr<BinderWeakControl> control;
};

struct AIBinder_DeathRecipient {
    AIBinder_DeathRecipient_onBinderDied onDied;
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked = nullptr;
};

namespace host::binder {
namespace {

constexpr transaction_code_t kPingTransaction = ('_' << 24) | ('P' << 16) | ('N' << 8) | 'G';

thread_local Process* tCurrent = nullptr;
thread_local uint64_t tTransaction = 0;
std::atomic<uint64_t> gSent{0};

// Runs a transaction's dispatch under its number.
binder_status_t numbered(uint64_t number, const std::function<binder_status_t()>& fn) {
    const uint64_t outer = std::exchange(tTransaction, number);
    const binder_status_t status = fn();
    tTransaction = outer;
    return status;
}

std::shared_ptr<Process>& mainHandle() {
    static auto* handle = new std::shared_ptr<Process>([] {
        auto process = std::make_shared<Process>("composer");
        process->handle = process;
        return process;
    }());
    return *handle;
}

// Processes are never freed: a binder thread or a stale proxy may still name one after its
// last handle has gone (the process is dead then).
std::mutex& processesMutex() {
    static auto* mutex = new std::mutex();
    return *mutex;
}
std::vector<Process*>& processes() {
    static auto* all = new std::vector<Process*>();
    return *all;
}

struct DeathLink {
    AIBinder* node;
    Process* holder;
    AIBinder_DeathRecipient* recipient;
    void* cookie;
    AIBinder_DeathRecipient_onBinderDied onDied;
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked;
};

std::mutex& deathMutex() {
    static auto* mutex = new std::mutex();
    return *mutex;
}
std::vector<DeathLink>& deathLinks() {
    static auto* links = new std::vector<DeathLink>();
    return *links;
}

void notifyUnlinked(const std::vector<DeathLink>& links) {
    for (const DeathLink& link : links) {
        if (link.onUnlinked != nullptr) link.onUnlinked(link.cookie);
    }
}

// Runs fn on a binder thread of process and waits for it; DEAD_OBJECT if process dies first.
binder_status_t callIn(Process* process, const std::function<binder_status_t()>& fn) {
    struct Done {
        std::mutex mutex;
        std::condition_variable cv;
        bool done = false;
        binder_status_t status = STATUS_OK;
        void finish(binder_status_t s) {
            std::lock_guard<std::mutex> lock(mutex);
            status = s;
            done = true;
            cv.notify_all();
        }
    };
    auto done = std::make_shared<Done>();
    process->post(Work{[done, &fn] { done->finish(fn()); },
                       [done] { done->finish(STATUS_DEAD_OBJECT); }});
    std::unique_lock<std::mutex> lock(done->mutex);
    done->cv.wait(lock, [&] { return done->done; });
    return done->status;
}

// The receiver's copy of a parcel: the same bytes and binders, its own duplicates of the
// descriptors, as the driver makes them.
std::unique_ptr<AParcel> copyInto(const AParcel& from, Process* to) {
    auto parcel = std::make_unique<AParcel>();
    parcel->data = from.data;
    parcel->process = to;
    for (const AParcel::Object& object : from.objects) {
        AParcel::Object copy;
        copy.binder = object.binder;
        if (object.fd >= 0) copy.fd = fcntl(object.fd, F_DUPFD_CLOEXEC, 0);
        parcel->objects.push_back(std::move(copy));
    }
    return parcel;
}

bool readToken(const AParcel* in, std::string* token) {
    return AParcel_readString(in, token, [](void* data, int32_t length, char** buffer) {
               if (length <= 0) return false;
               auto* s = static_cast<std::string*>(data);
               s->resize(static_cast<size_t>(length) - 1);
               *buffer = &(*s)[0];
               return true;
           }) == STATUS_OK;
}

// What a local binder does with a transaction, in its own process.
binder_status_t dispatch(AIBinder* local, transaction_code_t code, const AParcel* in,
                         AParcel* out) {
    AParcel_setDataPosition(in, 0);
    if (code >= FIRST_CALL_TRANSACTION && code <= LAST_CALL_TRANSACTION) {
        std::string token;
        if (!readToken(in, &token) || token != local->clazz->descriptor) return STATUS_BAD_TYPE;
        return local->clazz->onTransact(local, code, in, out);
    }
    return code == kPingTransaction ? STATUS_OK : STATUS_UNKNOWN_TRANSACTION;
}

void postDrain(AIBinder* local);

// One oneway call of a binder, then the binder queues behind the process's other work, as the
// driver hands a node its next asynchronous transaction only after the last one is done.
void drainOneway(const ndk::SpAIBinder& node) {
    AIBinder* local = node.get();
    std::function<void()> next;
    {
        std::lock_guard<std::mutex> lock(local->onewayMutex);
        if (local->oneway.empty()) {
            local->onewayRunning = false;
            return;
        }
        next = std::move(local->oneway.front());
        local->oneway.pop_front();
    }
    next();
    {
        std::lock_guard<std::mutex> lock(local->onewayMutex);
        if (local->oneway.empty()) {
            local->onewayRunning = false;
            return;
        }
    }
    postDrain(local);  // outside the lock: a dead process cancels at once, which takes it
}

void postDrain(AIBinder* local) {
    AIBinder_incStrong(local);
    ndk::SpAIBinder node(local);
    local->process->post(Work{[node] { drainOneway(node); },
                              [node] {
                                  std::lock_guard<std::mutex> lock(node.get()->onewayMutex);
                                  node.get()->oneway.clear();
                                  node.get()->onewayRunning = false;
                              }});
}

void postOneway(AIBinder* local, std::function<void()> call) {
    {
        std::lock_guard<std::mutex> lock(local->onewayMutex);
        local->oneway.push_back(std::move(call));
        if (local->onewayRunning) return;
        local->onewayRunning = true;
    }
    postDrain(local);
}

struct Registry {
    std::mutex mutex;
    std::map<std::string, ndk::SpAIBinder> services;  // the local binders
    std::condition_variable added;
    binder_exception_t failure = EX_NONE;
};

Registry& registry() {
    static Registry* r = new Registry();  // never destroyed: services may outlive static teardown
    return *r;
}

void removeServicesOf(Process* process) {
    std::vector<ndk::SpAIBinder> dropped;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    for (auto it = r.services.begin(); it != r.services.end();) {
        if (it->second.get()->process == process) {
            dropped.push_back(std::move(it->second));
            it = r.services.erase(it);
        } else {
            ++it;
        }
    }
}

void destroy(AIBinder* binder) {
    {
        std::lock_guard<std::mutex> lock(binder->weak->mutex);
        binder->weak->binder = nullptr;
    }
    if (binder->isProxy()) {
        Process* holder = binder->process;
        {
            std::lock_guard<std::mutex> lock(holder->proxyMutex);
            auto it = holder->proxies.find(binder->node.get());
            if (it != holder->proxies.end() && it->second == binder) holder->proxies.erase(it);
        }
        std::vector<DeathLink> unlinked;
        {
            std::lock_guard<std::mutex> lock(deathMutex());
            auto& links = deathLinks();
            for (auto it = links.begin(); it != links.end();) {
                if (it->node == binder->node.get() && it->holder == holder) {
                    unlinked.push_back(*it);
                    it = links.erase(it);
                } else {
                    ++it;
                }
            }
        }
        notifyUnlinked(unlinked);
    } else {
        {
            std::lock_guard<std::mutex> lock(binder->process->localMutex);
            binder->process->locals.erase(binder);
        }
        if (binder->clazz->onDestroy != nullptr) binder->clazz->onDestroy(binder->userData);
    }
    delete binder;
}

}  // namespace

Process* current() {
    return tCurrent != nullptr ? tCurrent : mainHandle().get();
}

bool tryIncStrong(AIBinder* binder) {
    int32_t n = binder->refs.load(std::memory_order_relaxed);
    while (n > 0) {
        if (binder->refs.compare_exchange_weak(n, n + 1, std::memory_order_acq_rel)) return true;
    }
    return false;
}

AIBinder* translate(AIBinder* local, Process* process) {
    if (local->process == process) {
        AIBinder_incStrong(local);
        return local;
    }
    std::lock_guard<std::mutex> lock(process->proxyMutex);
    auto it = process->proxies.find(local);
    if (it != process->proxies.end() && tryIncStrong(it->second)) return it->second;
    auto* proxy = new AIBinder();
    proxy->process = process;
    AIBinder_incStrong(local);
    proxy->node = ndk::SpAIBinder(local);
    proxy->weak->binder = proxy;
    process->proxies[local] = proxy;
    return proxy;
}

void Process::post(Work work) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mStopping) {
        lock.unlock();
        if (work.cancel) work.cancel();
        return;
    }
    mQueue.push_back(std::move(work));
    if (mIdle == 0 && mThreads.size() < mMaxThreads) {
        mThreads.emplace_back([this] { loop(); });
    } else {
        mChanged.notify_all();
    }
}

void Process::loop() {
    tCurrent = this;
    std::unique_lock<std::mutex> lock(mMutex);
    for (;;) {
        ++mIdle;
        mChanged.wait(lock, [&] { return mStopping || !mQueue.empty(); });
        --mIdle;
        if (mStopping) return;
        Work work = std::move(mQueue.front());
        mQueue.pop_front();
        ++mBusy;
        lock.unlock();
        work.run();
        work = Work();
        lock.lock();
        --mBusy;
        mChanged.notify_all();
    }
}

bool Process::waitIdle(int timeoutMs) {
    std::unique_lock<std::mutex> lock(mMutex);
    auto idle = [&] { return mStopping || (mQueue.empty() && mBusy == 0); };
    if (timeoutMs >= 0) return mChanged.wait_for(lock, std::chrono::milliseconds(timeoutMs), idle);
    mChanged.wait(lock, idle);  // under the manual clock a timed wait would not wait at all
    return true;
}

void Process::stop() {
    std::deque<Work> cancelled;
    std::vector<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mStopping = true;
        cancelled.swap(mQueue);
        threads.swap(mThreads);
        mChanged.notify_all();
    }
    for (Work& work : cancelled) {
        if (work.cancel) work.cancel();
    }
    for (std::thread& thread : threads) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void Process::setMaxThreads(size_t count) {
    std::lock_guard<std::mutex> lock(mMutex);
    mMaxThreads = count == 0 ? 1 : count;
}

void Process::start() {
    std::lock_guard<std::mutex> lock(mMutex);
    while (!mStopping && mThreads.size() < mMaxThreads) mThreads.emplace_back([this] { loop(); });
}

size_t Process::threadCount() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mThreads.size();
}

std::shared_ptr<Process> newProcess(const std::string& name) {
    auto* process = new Process(name);
    {
        std::lock_guard<std::mutex> lock(processesMutex());
        processes().push_back(process);
    }
    // The last handle going is the process exiting.
    std::shared_ptr<Process> handle(process, [](Process* p) { kill(*p); });
    process->handle = handle;
    return handle;
}

std::shared_ptr<Process> currentProcess() {
    return current()->handle.lock();
}

std::shared_ptr<Process> mainProcess() {
    return mainHandle();
}

const std::string& processName(const Process& process) {
    return process.name;
}

bool isAlive(const Process& process) {
    return process.alive.load();
}

void kill(Process& process) {
    if (&process == mainHandle().get() || !process.alive.exchange(false)) return;
    removeServicesOf(&process);
    std::vector<DeathLink> fired;
    {
        std::lock_guard<std::mutex> lock(deathMutex());
        auto& links = deathLinks();
        for (auto it = links.begin(); it != links.end();) {
            if (it->node->process == &process) {
                fired.push_back(*it);
                it = links.erase(it);
            } else {
                ++it;
            }
        }
    }
    for (const DeathLink& link : fired) {
        link.holder->post(Work{[link] {
                                   link.onDied(link.cookie);
                                   if (link.onUnlinked != nullptr) link.onUnlinked(link.cookie);
                               },
                               {}});
    }
    process.stop();
}

bool waitIdle(Process& process, int timeoutMs) {
    return process.waitIdle(timeoutMs);
}

uint64_t currentTransaction() {
    return tTransaction;
}

size_t poolThreads(const Process& process) {
    return const_cast<Process&>(process).threadCount();
}

ProcessScope::ProcessScope(std::shared_ptr<Process> process)
    : mProcess(std::move(process)), mPrevious(currentProcess()) {
    tCurrent = mProcess.get();
}

ProcessScope::~ProcessScope() {
    tCurrent = mPrevious.get();
}

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

using host::binder::current;
using host::binder::Process;

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onTransact == nullptr) return nullptr;
    return new AIBinder_Class{interfaceDescriptor, onCreate, onDestroy, onTransact};
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    clazz->onDump = onDump;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz->descriptor.c_str();
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) return nullptr;
    auto* binder = new AIBinder();
    binder->clazz = clazz;
    binder->process = current();
    binder->userData = clazz->onCreate != nullptr ? clazz->onCreate(args) : args;
    binder->weak->binder = binder;
    std::lock_guard<std::mutex> lock(binder->process->localMutex);
    binder->process->locals.insert(binder);
    return binder;
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && binder->isProxy();
}

bool AIBinder_isAlive(const AIBinder* binder) {
    if (binder == nullptr) return false;
    return !binder->isProxy() || binder->node.get()->process->alive.load();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    return AIBinder_isAlive(binder) ? STATUS_OK : STATUS_DEAD_OBJECT;
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    AIBinder* local = binder->target();
    AIBinder_onDump onDump = local->clazz->onDump;
    if (!binder->isProxy()) return onDump != nullptr ? onDump(local, fd, args, numArgs) : STATUS_OK;
    if (!AIBinder_isAlive(binder)) return STATUS_DEAD_OBJECT;
    if (onDump == nullptr) return STATUS_OK;
    ndk::ScopedFileDescriptor copy(fcntl(fd, F_DUPFD_CLOEXEC, 0));
    if (copy.get() < 0) return STATUS_BAD_VALUE;
    return host::binder::callIn(local->process,
                                [&] { return onDump(local, copy.get(), args, numArgs); });
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    if (!binder->isProxy()) return STATUS_INVALID_OPERATION;
    std::lock_guard<std::mutex> lock(host::binder::deathMutex());
    if (!AIBinder_isAlive(binder)) return STATUS_DEAD_OBJECT;
    host::binder::deathLinks().push_back({binder->node.get(), binder->process, recipient, cookie,
                                          recipient->onDied, recipient->onUnlinked});
    return STATUS_OK;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    if (!binder->isProxy()) return STATUS_INVALID_OPERATION;
    std::vector<host::binder::DeathLink> unlinked;
    {
        std::lock_guard<std::mutex> lock(host::binder::deathMutex());
        auto& links = host::binder::deathLinks();
        for (auto it = links.begin(); it != links.end(); ++it) {
            if (it->node == binder->node.get() && it->holder == binder->process &&
                it->recipient == recipient && it->cookie == cookie) {
                unlinked.push_back(*it);
                links.erase(it);
                break;
            }
        }
    }
    if (unlinked.empty()) return STATUS_NAME_NOT_FOUND;
    host::binder::notifyUnlinked(unlinked);
    return STATUS_OK;
}

uid_t AIBinder_getCallingUid() {
    return getuid();
}

pid_t AIBinder_getCallingPid() {
    return getpid();
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->refs.fetch_add(1, std::memory_order_relaxed);
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder != nullptr && binder->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        host::binder::destroy(binder);
    }
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
    return binder != nullptr ? binder->refs.load() : -1;
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    if (binder == nullptr || clazz == nullptr) return false;
    if (!binder->isProxy()) return binder->clazz == clazz;
    if (binder->node.get()->clazz->descriptor != clazz->descriptor) return false;
    const AIBinder_Class* expected = nullptr;
    binder->proxyClass.compare_exchange_strong(expected, clazz);
    return binder->proxyClass.load() == clazz;
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    return binder->isProxy() ? binder->proxyClass.load() : binder->clazz;
}

void* AIBinder_getUserData(AIBinder* binder) {
    return binder != nullptr && !binder->isProxy() ? binder->userData : nullptr;
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = AIBinder_getClass(binder);
    if (clazz == nullptr) return STATUS_INVALID_OPERATION;
    *in = AParcel_create();
    return AParcel_writeString(*in, clazz->descriptor.c_str(),
                               static_cast<int32_t>(clazz->descriptor.size()));
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr || *in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;
    if (binder == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    Process* caller = current();
    AIBinder* local = binder->target();
    if (!binder->isProxy()) {  // a call within the process is direct
        *out = AParcel_create();
        return host::binder::dispatch(local, code, request.get(), *out);
    }
    if (!caller->alive.load() || !local->process->alive.load()) return STATUS_DEAD_OBJECT;
    std::shared_ptr<AParcel> received = host::binder::copyInto(*request, local->process);
    if ((flags & FLAG_ONEWAY) != 0) {
        *out = AParcel_create();
        AIBinder_incStrong(local);
        ndk::SpAIBinder node(local);
        const uint64_t number = ++host::binder::gSent;
        host::binder::postOneway(local, [node, received, code, number] {
            AParcel reply;
            reply.process = node.get()->process;
            host::binder::numbered(number, [&] {
                return host::binder::dispatch(node.get(), code, received.get(), &reply);
            });
        });
        return STATUS_OK;
    }
    AParcel reply;
    reply.process = local->process;
    const uint64_t number = ++host::binder::gSent;
    binder_status_t status = host::binder::callIn(local->process, [&] {
        return host::binder::numbered(number, [&] {
            return host::binder::dispatch(local, code, received.get(), &reply);
        });
    });
    received.reset();
    *out = host::binder::copyInto(reply, caller).release();
    return status;
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    return new AIBinder_Weak{binder->weak};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return nullptr;
    std::lock_guard<std::mutex> lock(weakBinder->control->mutex);
    AIBinder* binder = weakBinder->control->binder;
    return binder != nullptr && host::binder::tryIncStrong(binder) ? binder : nullptr;
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    if (onBinderDied == nullptr) return nullptr;
    return new AIBinder_DeathRecipient{onBinderDied};
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    recipient->onUnlinked = onUnlinked;
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    if (recipient == nullptr) return;
    std::vector<host::binder::DeathLink> unlinked;
    {
        std::lock_guard<std::mutex> lock(host::binder::deathMutex());
        auto& links = host::binder::deathLinks();
        for (auto it = links.begin(); it != links.end();) {
            if (it->recipient == recipient) {
                unlinked.push_back(*it);
                it = links.erase(it);
            } else {
                ++it;
            }
        }
    }
    host::binder::notifyUnlinked(unlinked);
    delete recipient;
}

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || instance == nullptr) return EX_ILLEGAL_ARGUMENT;
    auto& r = host::binder::registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (r.failure != EX_NONE) return r.failure;
    AIBinder* local = binder->target();
    AIBinder_incStrong(local);
    r.services[instance] = ndk::SpAIBinder(local);
    r.added.notify_all();
    return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    auto& r = host::binder::registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.services.find(instance);
    if (it == r.services.end()) return nullptr;
    return host::binder::translate(it->second.get(), current());
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    if (instance == nullptr) return nullptr;
    auto& r = host::binder::registry();
    std::unique_lock<std::mutex> lock(r.mutex);
    if (!r.added.wait_for(lock, std::chrono::seconds(10),
                          [&] { return r.services.count(instance) != 0; })) {
        return nullptr;
    }
    return host::binder::translate(r.services[instance].get(), current());
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    current()->setMaxThreads(numThreads);
    return true;
}

void ABinderProcess_startThreadPool() {
    current()->start();
}
