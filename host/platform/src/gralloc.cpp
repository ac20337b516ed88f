// gralloc stand-in: memfd-backed buffers shared by GraphicBufferAllocator and GraphicBufferMapper.
#include <hardware/gralloc.h>
#include <host/gralloc_control.h>
#include <sys/mman.h>
#include <ui/GraphicBufferAllocator.h>
#include <ui/GraphicBufferMapper.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

namespace android {
namespace {

namespace control = host::gralloc;

// Larger requests fail with NO_MEMORY, as a real heap would long before this.
constexpr uint64_t kMaxAllocationBytes = 1ULL << 31;

struct Buffer {
    int fd = -1;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t pitch = 0;
    uint32_t bytesPerPixel = 0;
    int32_t reportedFormat = 0;
    uint64_t size = 0;
    void* address = nullptr;  // mapped on first lock, unmapped by free
    int lockCount = 0;
};

struct Gralloc {
    std::mutex mutex;
    std::map<const native_handle_t*, Buffer> buffers;
    uint32_t rowAlignment = control::kDefaultRowAlignment;
    int failAllocations = 0;
    status_t failAllocationStatus = NO_MEMORY;
    int failAllocationsLeavingHandle = 0;
    int failLocks = 0;
    status_t failLockStatus = NO_MEMORY;
    int32_t reportFormat = -1;
    size_t allocationCount = 0;
    size_t freeCount = 0;
};

Gralloc& gralloc() {
    static Gralloc* g = new Gralloc();  // never destroyed: buffers may be freed at any time
    return *g;
}

// Creates the memfd and the handle describing it; nullptr (and the error) on failure.
native_handle_t* createBuffer(uint32_t width, uint32_t height, uint32_t pitch, PixelFormat format,
                              uint64_t size, const std::string& name, status_t* error) {
    int fd = memfd_create(name.empty() ? "gralloc" : name.c_str(), MFD_CLOEXEC);
    if (fd < 0) {
        *error = NO_MEMORY;
        return nullptr;
    }
    if (ftruncate(fd, static_cast<off_t>(size)) != 0) {
        close(fd);
        *error = NO_MEMORY;
        return nullptr;
    }
    native_handle_t* handle = native_handle_create(control::kNumFds, control::kNumInts);
    if (handle == nullptr) {
        close(fd);
        *error = NO_MEMORY;
        return nullptr;
    }
    handle->data[0] = fd;
    int* ints = &handle->data[control::kNumFds];
    ints[control::kIntWidth] = static_cast<int>(width);
    ints[control::kIntHeight] = static_cast<int>(height);
    ints[control::kIntPitch] = static_cast<int>(pitch);
    ints[control::kIntFormat] = format;
    ints[control::kIntSizeLow] = static_cast<int>(static_cast<uint32_t>(size));
    ints[control::kIntSizeHigh] = static_cast<int>(static_cast<uint32_t>(size >> 32));
    return handle;
}

}  // namespace

GraphicBufferAllocator& GraphicBufferAllocator::get() {
    static GraphicBufferAllocator* allocator = new GraphicBufferAllocator();
    return *allocator;
}

status_t GraphicBufferAllocator::allocate(uint32_t w, uint32_t h, PixelFormat format,
                                          uint32_t layerCount, uint64_t /*usage*/,
                                          buffer_handle_t* handle, uint32_t* stride,
                                          std::string requestorName) {
    if (handle == nullptr) return BAD_VALUE;
    Gralloc& g = gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    if (g.failAllocations > 0) {
        --g.failAllocations;
        return g.failAllocationStatus;
    }
    uint32_t bpp = bytesPerPixel(format);
    if (bpp == 0) return BAD_VALUE;
    if (w == 0 || h == 0) w = h = 1;
    if (layerCount == 0) layerCount = 1;
    if (w > INT32_MAX || h > INT32_MAX) return BAD_VALUE;

    uint64_t alignment = g.rowAlignment;
    uint64_t pitch = (w + alignment - 1) / alignment * alignment;
    uint64_t size = pitch * h * bpp * layerCount;
    if (pitch > INT32_MAX || size > kMaxAllocationBytes) return NO_MEMORY;

    status_t error = OK;
    native_handle_t* created =
            createBuffer(w, h, static_cast<uint32_t>(pitch), format, size, requestorName, &error);
    if (created == nullptr) return error;

    Buffer buffer;
    buffer.fd = created->data[0];
    buffer.width = w;
    buffer.height = h;
    buffer.pitch = static_cast<uint32_t>(pitch);
    buffer.bytesPerPixel = bpp;
    buffer.reportedFormat = g.reportFormat >= 0 ? g.reportFormat : format;
    buffer.size = size;
    g.buffers.emplace(created, buffer);
    ++g.allocationCount;

    *handle = created;
    if (g.failAllocationsLeavingHandle > 0) {
        --g.failAllocationsLeavingHandle;
        return NO_MEMORY;
    }
    if (stride != nullptr) *stride = static_cast<uint32_t>(pitch);
    return OK;
}

status_t GraphicBufferAllocator::free(buffer_handle_t handle) {
    Gralloc& g = gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    auto it = g.buffers.find(handle);
    if (it == g.buffers.end()) {
        // The real allocator would close someone else's descriptors or touch freed memory here;
        // a double free or a free of a handle it never made is always a bug in the caller.
        fprintf(stderr, "gralloc: free of unknown buffer handle %p (double free?)\n",
                static_cast<const void*>(handle));
        abort();
    }
    if (it->second.address != nullptr) munmap(it->second.address, it->second.size);
    native_handle_t* owned = const_cast<native_handle_t*>(handle);
    native_handle_close(owned);
    native_handle_delete(owned);
    g.buffers.erase(it);
    ++g.freeCount;
    return OK;
}

GraphicBufferMapper& GraphicBufferMapper::get() {
    static GraphicBufferMapper* mapper = new GraphicBufferMapper();
    return *mapper;
}

status_t GraphicBufferMapper::lock(buffer_handle_t handle, uint32_t usage, const Rect& bounds,
                                   void** vaddr) {
    if (vaddr == nullptr) return BAD_VALUE;
    *vaddr = nullptr;
    Gralloc& g = gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    auto it = g.buffers.find(handle);
    if (it == g.buffers.end()) return BAD_VALUE;
    Buffer& b = it->second;
    if ((usage & (GRALLOC_USAGE_SW_READ_MASK | GRALLOC_USAGE_SW_WRITE_MASK)) == 0) {
        return BAD_VALUE;
    }
    if (bounds.left < 0 || bounds.top < 0 || bounds.left > bounds.right ||
        bounds.top > bounds.bottom || static_cast<uint32_t>(bounds.right) > b.width ||
        static_cast<uint32_t>(bounds.bottom) > b.height) {
        return BAD_VALUE;
    }
    if (g.failLocks > 0) {
        --g.failLocks;
        return g.failLockStatus;
    }
    if (b.address == nullptr) {
        void* address = mmap(nullptr, b.size, PROT_READ | PROT_WRITE, MAP_SHARED, b.fd, 0);
        if (address == MAP_FAILED) return NO_MEMORY;
        b.address = address;
    }
    ++b.lockCount;
    *vaddr = b.address;
    return OK;
}

status_t GraphicBufferMapper::unlock(buffer_handle_t handle, base::unique_fd* outFence) {
    if (outFence != nullptr) outFence->reset();
    Gralloc& g = gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    auto it = g.buffers.find(handle);
    if (it == g.buffers.end() || it->second.lockCount == 0) return BAD_VALUE;
    --it->second.lockCount;
    return OK;
}

namespace {

template <typename T, typename Getter>
status_t query(buffer_handle_t handle, T* out, Getter getter) {
    if (out == nullptr) return BAD_VALUE;
    Gralloc& g = gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    auto it = g.buffers.find(handle);
    if (it == g.buffers.end()) return BAD_VALUE;
    *out = getter(it->second);
    return OK;
}

}  // namespace

status_t GraphicBufferMapper::getPixelFormatRequested(buffer_handle_t handle,
                                                      ui::PixelFormat* outFormat) {
    return query(handle, outFormat,
                 [](const Buffer& b) { return static_cast<ui::PixelFormat>(b.reportedFormat); });
}

status_t GraphicBufferMapper::getAllocationSize(buffer_handle_t handle, uint64_t* outSize) {
    return query(handle, outSize, [](const Buffer& b) { return b.size; });
}

status_t GraphicBufferMapper::getWidth(buffer_handle_t handle, uint64_t* outWidth) {
    return query(handle, outWidth, [](const Buffer& b) { return uint64_t{b.width}; });
}

status_t GraphicBufferMapper::getHeight(buffer_handle_t handle, uint64_t* outHeight) {
    return query(handle, outHeight, [](const Buffer& b) { return uint64_t{b.height}; });
}

}  // namespace android

namespace host::gralloc {

void reset() {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.rowAlignment = kDefaultRowAlignment;
    g.failAllocations = 0;
    g.failAllocationStatus = android::NO_MEMORY;
    g.failAllocationsLeavingHandle = 0;
    g.failLocks = 0;
    g.failLockStatus = android::NO_MEMORY;
    g.reportFormat = -1;
    g.allocationCount = 0;
    g.freeCount = 0;
}

void setRowAlignment(uint32_t pixels) {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.rowAlignment = pixels == 0 ? 1 : pixels;
}

void failAllocations(int count, android::status_t status) {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.failAllocations = count;
    g.failAllocationStatus = status;
}

void failAllocationsLeavingHandle(int count) {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.failAllocationsLeavingHandle = count;
}

void failLocks(int count, android::status_t status) {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.failLocks = count;
    g.failLockStatus = status;
}

void reportFormat(int32_t format) {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    g.reportFormat = format;
}

size_t allocationCount() {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    return g.allocationCount;
}

size_t freeCount() {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    return g.freeCount;
}

size_t liveBuffers() {
    android::Gralloc& g = android::gralloc();
    std::lock_guard<std::mutex> lock(g.mutex);
    return g.buffers.size();
}

}  // namespace host::gralloc
