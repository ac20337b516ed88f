#include <device/SimulatedDisplayConfig.h>
#include <host/gralloc_control.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace host::device {

using ::aidl::android::hardware::common::NativeHandle;
using Clock = std::chrono::steady_clock;

namespace {

using host::gralloc::kIntHeight;
using host::gralloc::kIntPitch;
using host::gralloc::kIntSizeHigh;
using host::gralloc::kIntSizeLow;
using host::gralloc::kIntWidth;
constexpr int kBytesPerPixel = 3;  // the writeback always produces RGB_888

int64_t monotonicNs() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1'000'000'000 + ts.tv_nsec;
}

struct BufferId {
    dev_t dev;
    ino_t ino;
    bool operator==(const BufferId& o) const { return dev == o.dev && ino == o.ino; }
};

}  // namespace

struct SimulatedDisplayConfig::Engine {
    struct Panel {
        std::vector<PanelMode> modes;
        uint32_t active = 0;
        std::shared_ptr<const Frame> mixer;
        std::shared_ptr<const Frame> post;
    };

    struct Request {
        std::shared_ptr<config::IDisplayConfigCallback> callback;
        PanelId panel;
        config::Rect rect;
        bool postProcessed;
        ndk::ScopedFileDescriptor fd;  // our own duplicate
        BufferId id;
        int32_t width;
        int32_t height;
        int32_t pitch;
        uint64_t size;
        Clock::time_point readyAt;
        Outcome outcome;
        int32_t error;
        bool released = false;  // by completeNext
        int32_t releasedError = 0;
    };

    std::mutex mutex;
    std::condition_variable wake;       // the completion thread waits on it
    std::condition_variable completed;  // waitForCompletions waits on it
    Panel panels[2];
    std::optional<std::chrono::nanoseconds> latency;
    std::deque<std::pair<Outcome, int32_t>> outcomes;
    bool manual = false;
    bool synchronous = false;
    bool stopping = false;
    std::deque<std::unique_ptr<Request>> queue;
    std::vector<BufferId> inFlight;
    size_t inProgress = 0;
    size_t completions = 0;
    std::deque<WritebackRequest> requests;  // the most recent kHistoryWindow
    std::function<void(const WritebackRequest&)> observer;
    std::mutex joinMutex;
    std::thread thread;

    Panel& panel(PanelId id) { return panels[static_cast<int>(id)]; }

    binder_exception_t accept(const std::shared_ptr<config::IDisplayConfigCallback>& callback,
                              int32_t dispId, const config::Rect& rect, bool postProcessed,
                              const NativeHandle& buffer);
    void loop();
    // The front request may be completed now: released, or due and not held by manual mode.
    bool frontReady() const;
    // Completes the front request; the lock is released around the writing and the callback.
    void completeFront(std::unique_lock<std::mutex>& lock);
    // Completes on the caller's thread every request that may complete now (synchronous mode).
    void drain();
    void shutdown();
};

namespace {

// Copies the picture into the client's buffer at its row pitch. A null frame is black at
// blackWidth x blackHeight. Returns 0 or a negative errno.
int32_t writePixels(int fd, int32_t bufWidth, int32_t bufHeight, int32_t pitch, uint64_t size,
                    const config::Rect& rect, const Frame* frame, int blackWidth, int blackHeight) {
    struct stat st {};
    if (fstat(fd, &st) != 0) return -errno;
    // Never map past the end of the file: touching such pages raises SIGBUS.
    const uint64_t length = std::min<uint64_t>(size, static_cast<uint64_t>(st.st_size));
    if (length == 0) return -EINVAL;
    void* base = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (base == MAP_FAILED) return -errno;

    const int64_t srcWidth = frame != nullptr ? frame->width : blackWidth;
    const int64_t srcHeight = frame != nullptr ? frame->height : blackHeight;
    int64_t left = 0, top = 0, right = srcWidth, bottom = srcHeight;
    if (rect.left != 0 || rect.top != 0 || rect.right != 0 || rect.bottom != 0) {
        left = rect.left;
        top = rect.top;
        right = rect.right;
        bottom = rect.bottom;
    }
    left = std::max<int64_t>(left, 0);
    top = std::max<int64_t>(top, 0);
    right = std::min({right, srcWidth, static_cast<int64_t>(bufWidth)});
    bottom = std::min({bottom, srcHeight, static_cast<int64_t>(bufHeight)});

    auto* dst = static_cast<uint8_t*>(base);
    for (int64_t y = top; y < bottom && left < right; ++y) {
        const uint64_t offset = (static_cast<uint64_t>(y) * pitch + left) * kBytesPerPixel;
        if (offset >= length) break;
        const uint64_t bytes = std::min<uint64_t>((right - left) * kBytesPerPixel, length - offset);
        if (frame != nullptr) {
            memcpy(dst + offset, frame->row(static_cast<int>(y)) + left * kBytesPerPixel, bytes);
        } else {
            memset(dst + offset, 0, bytes);
        }
    }
    munmap(base, length);
    return 0;
}

}  // namespace

binder_exception_t SimulatedDisplayConfig::Engine::accept(
        const std::shared_ptr<config::IDisplayConfigCallback>& callback, int32_t dispId,
        const config::Rect& rect, bool postProcessed, const NativeHandle& buffer) {
    if (callback == nullptr) return EX_NULL_POINTER;
    if (stopping) return EX_TRANSACTION_FAILED;
    const std::optional<PanelId> panelId = panelFor(dispId);
    if (!panelId || panel(*panelId).modes.empty()) return EX_ILLEGAL_ARGUMENT;
    if (buffer.fds.size() != 1 || buffer.fds[0].get() < 0 ||
        buffer.ints.size() < static_cast<size_t>(host::gralloc::kNumInts)) {
        return EX_ILLEGAL_ARGUMENT;
    }
    const int32_t width = buffer.ints[kIntWidth];
    const int32_t height = buffer.ints[kIntHeight];
    const int32_t pitch = buffer.ints[kIntPitch];
    const uint64_t size = static_cast<uint32_t>(buffer.ints[kIntSizeLow]) |
                          static_cast<uint64_t>(static_cast<uint32_t>(buffer.ints[kIntSizeHigh]))
                                  << 32;
    if (width <= 0 || height <= 0 || pitch < width || size == 0) return EX_ILLEGAL_ARGUMENT;
    struct stat st {};
    if (fstat(buffer.fds[0].get(), &st) != 0) return EX_ILLEGAL_ARGUMENT;
    const BufferId id{st.st_dev, st.st_ino};
    if (std::find(inFlight.begin(), inFlight.end(), id) != inFlight.end()) {
        return EX_ILLEGAL_ARGUMENT;
    }

    std::pair<Outcome, int32_t> outcome{Outcome::Ok, 0};
    if (!outcomes.empty()) {
        outcome = outcomes.front();
        outcomes.pop_front();
    }
    if (outcome.first == Outcome::Refuse) return EX_TRANSACTION_FAILED;
    if (outcome.first == Outcome::Drop) return EX_NONE;

    // The caller closes its handle when the call returns; keep our own reference to the buffer.
    const int fd = fcntl(buffer.fds[0].get(), F_DUPFD_CLOEXEC, 0);
    if (fd < 0) return EX_TRANSACTION_FAILED;

    Panel& target = panel(*panelId);
    const std::chrono::nanoseconds delay =
            latency.value_or(std::chrono::nanoseconds(target.modes[target.active].vsyncPeriodNs));
    auto request = std::make_unique<Request>();
    request->callback = callback;
    request->panel = *panelId;
    request->rect = rect;
    request->postProcessed = postProcessed;
    request->fd.reset(fd);
    request->id = id;
    request->width = width;
    request->height = height;
    request->pitch = pitch;
    request->size = size;
    request->readyAt = Clock::now() + delay;
    request->outcome = outcome.first;
    request->error = outcome.second;
    queue.push_back(std::move(request));
    inFlight.push_back(id);
    // In synchronous mode the caller completes it; waking the idle thread would only cost a
    // context switch per request.
    if (!synchronous) wake.notify_all();
    return EX_NONE;
}

void SimulatedDisplayConfig::Engine::loop() {
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopping) {
        if (queue.empty() || synchronous) {
            wake.wait(lock);
            continue;
        }
        if (!queue.front()->released) {
            if (manual) {
                wake.wait(lock);
                continue;
            }
            const Clock::time_point readyAt = queue.front()->readyAt;
            if (Clock::now() < readyAt) {
                wake.wait_until(lock, readyAt);
                continue;
            }
        }
        completeFront(lock);
    }
}

bool SimulatedDisplayConfig::Engine::frontReady() const {
    return !stopping && !queue.empty() && (queue.front()->released || !manual);
}

void SimulatedDisplayConfig::Engine::drain() {
    std::unique_lock<std::mutex> lock(mutex);
    while (synchronous && frontReady()) completeFront(lock);
}

void SimulatedDisplayConfig::Engine::completeFront(std::unique_lock<std::mutex>& lock) {
    std::unique_ptr<Request> request = std::move(queue.front());
    queue.pop_front();
    ++inProgress;

    int32_t error = 0;
    bool write = true;
    if (request->released) {
        error = request->releasedError;
        write = error >= 0;
    } else if (request->outcome == Outcome::Error) {
        error = request->error;
        write = false;
    }
    // The picture on screen when the writeback happens, not when it was asked for.
    Panel& source = panel(request->panel);
    std::shared_ptr<const Frame> frame =
            request->postProcessed && source.post != nullptr ? source.post : source.mixer;
    const PanelMode mode = source.modes.empty() ? PanelMode{0, 0, 0} : source.modes[source.active];
    const int blackWidth = mode.width;
    const int blackHeight = mode.height;
    lock.unlock();

    if (write) {
        const int32_t status =
                writePixels(request->fd.get(), request->width, request->height, request->pitch,
                            request->size, request->rect, frame.get(), blackWidth, blackHeight);
        if (status != 0) error = status;
    }
    request->fd.reset();
    std::shared_ptr<config::IDisplayConfigCallback> callback = std::move(request->callback);
    const BufferId id = request->id;
    request.reset();
    frame.reset();

    lock.lock();
    // The buffer is the client's again before it hears about it.
    inFlight.erase(std::remove(inFlight.begin(), inFlight.end(), id), inFlight.end());
    lock.unlock();
    callback->notifyCWBBufferDone(error, NativeHandle{});
    callback.reset();
    lock.lock();
    --inProgress;
    ++completions;
    completed.notify_all();
}

void SimulatedDisplayConfig::Engine::shutdown() {
    std::deque<std::unique_ptr<Request>> dropped;
    {
        std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
        dropped.swap(queue);
        for (const auto& request : dropped) {
            inFlight.erase(std::remove(inFlight.begin(), inFlight.end(), request->id),
                           inFlight.end());
        }
        wake.notify_all();
        completed.notify_all();
    }
    // Closing the duplicates and releasing callbacks happens outside the lock: a callback's
    // destructor may call back into us.
    dropped.clear();

    std::lock_guard<std::mutex> join(joinMutex);
    if (!thread.joinable()) return;
    if (thread.get_id() == std::this_thread::get_id()) {
        // The last reference dropped on the completion thread itself; it exits on its own and
        // keeps the engine alive until then.
        thread.detach();
    } else {
        thread.join();
    }
}

std::vector<PanelMode> SimulatedDisplayConfig::defaultModes(PanelId panel) {
    if (panel == PanelId::Main) return {{1080, 2400, kVsync60Hz}, {1080, 2400, kVsync120Hz}};
    return {{720, 1600, kVsync60Hz}};
}

std::optional<PanelId> SimulatedDisplayConfig::panelFor(int32_t dispId) {
    switch (static_cast<config::DisplayType>(dispId)) {
        case config::DisplayType::PRIMARY:
            return PanelId::Main;
        case config::DisplayType::BUILTIN2:
            return PanelId::Secondary;
        default:
            return std::nullopt;
    }
}

SimulatedDisplayConfig::SimulatedDisplayConfig() : mEngine(std::make_shared<Engine>()) {
    mEngine->panel(PanelId::Main).modes = defaultModes(PanelId::Main);
    mEngine->panel(PanelId::Secondary).modes = defaultModes(PanelId::Secondary);
    std::lock_guard<std::mutex> join(mEngine->joinMutex);
    mEngine->thread = std::thread([engine = mEngine] { engine->loop(); });
}

SimulatedDisplayConfig::~SimulatedDisplayConfig() {
    mEngine->shutdown();
}

void SimulatedDisplayConfig::shutdown() {
    mEngine->shutdown();
}

ndk::ScopedAStatus SimulatedDisplayConfig::getConfigCount(config::DisplayType dpy, int32_t* count) {
    if (count == nullptr) return ndk::ScopedAStatus::fromExceptionCode(EX_NULL_POINTER);
    const std::optional<PanelId> id = panelFor(static_cast<int32_t>(dpy));
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    *count = id ? static_cast<int32_t>(mEngine->panel(*id).modes.size()) : 0;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SimulatedDisplayConfig::getDisplayAttributes(int32_t index,
                                                                config::DisplayType dpy,
                                                                config::Attributes* attributes) {
    if (attributes == nullptr) return ndk::ScopedAStatus::fromExceptionCode(EX_NULL_POINTER);
    const std::optional<PanelId> id = panelFor(static_cast<int32_t>(dpy));
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    if (!id || index < 0 || static_cast<size_t>(index) >= mEngine->panel(*id).modes.size()) {
        return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_ARGUMENT);
    }
    const PanelMode& mode = mEngine->panel(*id).modes[index];
    config::Attributes out;
    out.vsyncPeriod = mode.vsyncPeriodNs;
    out.xRes = mode.width;
    out.yRes = mode.height;
    out.xDpi = kPanelDpi;
    out.yDpi = kPanelDpi;
    out.isYuv = false;
    *attributes = out;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus SimulatedDisplayConfig::setCWBOutputBuffer(
        const std::shared_ptr<config::IDisplayConfigCallback>& callback, int32_t dispId,
        const config::Rect& rect, bool postProcessed, const NativeHandle& buffer) {
    WritebackRequest record{dispId, rect, postProcessed, monotonicNs()};
    std::function<void(const WritebackRequest&)> observer;
    {
        std::lock_guard<std::mutex> lock(mEngine->mutex);
        record.result = mEngine->accept(callback, dispId, rect, postProcessed, buffer);
        mEngine->requests.push_back(record);
        if (mEngine->requests.size() > kHistoryWindow) mEngine->requests.pop_front();
        observer = mEngine->observer;
    }
    if (observer) observer(record);
    mEngine->drain();
    if (record.result == EX_NONE) return ndk::ScopedAStatus::ok();
    return ndk::ScopedAStatus::fromExceptionCode(record.result);
}

void SimulatedDisplayConfig::setPanelModes(PanelId panel, std::vector<PanelMode> modes) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    Engine::Panel& p = mEngine->panel(panel);
    p.modes = std::move(modes);
    if (p.active >= p.modes.size()) p.active = 0;
}

std::vector<PanelMode> SimulatedDisplayConfig::panelModes(PanelId panel) const {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    return mEngine->panel(panel).modes;
}

bool SimulatedDisplayConfig::setActiveMode(PanelId panel, uint32_t index) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    Engine::Panel& p = mEngine->panel(panel);
    if (index >= p.modes.size()) return false;
    p.active = index;
    return true;
}

uint32_t SimulatedDisplayConfig::activeMode(PanelId panel) const {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    return mEngine->panel(panel).active;
}

void SimulatedDisplayConfig::setFrame(PanelId panel, FrameKind kind, Frame frame) {
    setFrame(panel, kind, std::make_shared<const Frame>(std::move(frame)));
}

void SimulatedDisplayConfig::setFrame(PanelId panel, FrameKind kind,
                                      std::shared_ptr<const Frame> frame) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    Engine::Panel& p = mEngine->panel(panel);
    (kind == FrameKind::Mixer ? p.mixer : p.post).swap(frame);
    // The previous picture goes when frame does, after the lock.
}

void SimulatedDisplayConfig::clearFrame(PanelId panel, FrameKind kind) {
    std::shared_ptr<const Frame> old;  // freed outside the lock
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    Engine::Panel& p = mEngine->panel(panel);
    old.swap(kind == FrameKind::Mixer ? p.mixer : p.post);
}

void SimulatedDisplayConfig::setLatency(std::optional<std::chrono::nanoseconds> latency) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->latency = latency;
}

void SimulatedDisplayConfig::pushOutcome(Outcome outcome, int32_t error) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->outcomes.emplace_back(outcome, error);
}

void SimulatedDisplayConfig::clearOutcomes() {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->outcomes.clear();
}

void SimulatedDisplayConfig::setManualCompletion(bool manual) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->manual = manual;
    if (!mEngine->synchronous) mEngine->wake.notify_all();
}

bool SimulatedDisplayConfig::completeNext(int32_t error) {
    {
        std::lock_guard<std::mutex> lock(mEngine->mutex);
        auto it = std::find_if(mEngine->queue.begin(), mEngine->queue.end(),
                               [](const auto& request) { return !request->released; });
        if (it == mEngine->queue.end()) return false;
        (*it)->released = true;
        (*it)->releasedError = error;
        if (!mEngine->synchronous) mEngine->wake.notify_all();
    }
    mEngine->drain();
    return true;
}

size_t SimulatedDisplayConfig::dropPending() {
    std::deque<std::unique_ptr<Engine::Request>> dropped;
    {
        std::lock_guard<std::mutex> lock(mEngine->mutex);
        dropped.swap(mEngine->queue);
        for (const auto& request : dropped) {
            mEngine->inFlight.erase(
                    std::remove(mEngine->inFlight.begin(), mEngine->inFlight.end(), request->id),
                    mEngine->inFlight.end());
        }
    }
    // Closing the duplicates and releasing callbacks happens outside the lock.
    return dropped.size();
}

void SimulatedDisplayConfig::setSynchronousCompletion(bool synchronous) {
    {
        std::lock_guard<std::mutex> lock(mEngine->mutex);
        mEngine->synchronous = synchronous;
        mEngine->wake.notify_all();
    }
    mEngine->drain();
}

size_t SimulatedDisplayConfig::pendingCount() const {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    return mEngine->queue.size() + mEngine->inProgress;
}

void SimulatedDisplayConfig::setRequestObserver(
        std::function<void(const WritebackRequest&)> observer) {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->observer = std::move(observer);
}

std::vector<WritebackRequest> SimulatedDisplayConfig::requests() const {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    return {mEngine->requests.begin(), mEngine->requests.end()};
}

void SimulatedDisplayConfig::clearRequests() {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    mEngine->requests.clear();
}

size_t SimulatedDisplayConfig::completionsSent() const {
    std::lock_guard<std::mutex> lock(mEngine->mutex);
    return mEngine->completions;
}

bool SimulatedDisplayConfig::waitForCompletions(size_t n, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> lock(mEngine->mutex);
    return mEngine->completed.wait_for(lock, timeout, [&] { return mEngine->completions >= n; });
}

}  // namespace host::device
