// The in-process binder's objects, shared by the parcel, the binders and the processes.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <host/binder_process.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

struct AIBinder_Class {
    std::string descriptor;
    AIBinder_Class_onCreate onCreate;
    AIBinder_Class_onDestroy onDestroy;
    AIBinder_Class_onTransact onTransact;
    AIBinder_onDump onDump = nullptr;
};

// Lets a weak reference find its binder until the binder is gone.
struct BinderWeakControl {
    std::mutex mutex;
    AIBinder* binder = nullptr;
};

struct AIBinder {
    std::atomic<int32_t> refs{1};
    host::binder::Process* process = nullptr;  // local: the owner; proxy: the holder
    // Local binders.
    const AIBinder_Class* clazz = nullptr;
    void* userData = nullptr;
    std::shared_ptr<BinderWeakControl> weak = std::make_shared<BinderWeakControl>();
    std::mutex onewayMutex;
    std::deque<std::function<void()>> oneway;
    bool onewayRunning = false;
    // Proxies: the local binder in its own process, and the class associated here.
    ndk::SpAIBinder node;
    std::atomic<const AIBinder_Class*> proxyClass{nullptr};

    bool isProxy() const { return node.get() != nullptr; }
    AIBinder* target() { return isProxy() ? node.get() : this; }
};

struct AParcel {
    struct Object {
        ndk::SpAIBinder binder;  // the local binder, translated when read
        int fd = -1;             // owned by the parcel
    };
    std::vector<uint8_t> data;
    mutable size_t position = 0;
    std::vector<Object> objects;
    host::binder::Process* process = nullptr;  // where binders read from it arrive

    ~AParcel();
    void clear();
};

namespace host::binder {

// One unit of work on a process's binder threads; cancel runs instead if the process dies first.
struct Work {
    std::function<void()> run;
    std::function<void()> cancel;
};

class Process {
  public:
    explicit Process(std::string name) : name(std::move(name)) {}

    const std::string name;
    std::atomic<bool> alive{true};
    std::weak_ptr<Process> handle;

    void post(Work work);
    bool waitIdle(int timeoutMs);
    void stop();
    void setMaxThreads(size_t count);
    // Starts every thread the pool may have; otherwise they start as work arrives.
    void start();
    size_t threadCount();

    // Proxies held here, by the local binder they reach.
    std::mutex proxyMutex;
    std::map<AIBinder*, AIBinder*> proxies;
    // Local binders owned here.
    std::mutex localMutex;
    std::set<AIBinder*> locals;

  private:
    void loop();

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Work> mQueue;
    std::vector<std::thread> mThreads;
    size_t mIdle = 0;
    size_t mBusy = 0;
    size_t mMaxThreads = 15;
    bool mStopping = false;
};

Process* current();
// binder as process sees it: the local binder itself there, else that process's one proxy.
AIBinder* translate(AIBinder* local, Process* process);
// A strong reference if binder still has one, else null.
bool tryIncStrong(AIBinder* binder);

}  // namespace host::binder
