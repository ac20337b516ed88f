#define LOG_TAG "CwbService"

#include "GrallocHelper.h"

#include <hardware/gralloc.h>
#include <log/log.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <system/graphics.h>
#include <ui/GraphicBufferAllocator.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace {
constexpr size_t kPathSize = 16384;
constexpr const char* kDumpDir = "/data/vendor/display/frame_dump_disp_id_cwb";
}  // namespace

GrallocHelper::GrallocHelper() = default;

GrallocHelper::~GrallocHelper() = default;

void GrallocHelper::Allocate(uint32_t width, uint32_t height, uint32_t layerCount, uint64_t usage,
                             native_handle const** handle) {
    uint32_t stride = 0;
    android::status_t status = android::GraphicBufferAllocator::get().allocate(
            width, height, HAL_PIXEL_FORMAT_RGB_888, layerCount, usage, handle, &stride,
            "CWBGrallocBufferAllocator");
    if (status != 0) {
        ALOGE("allocate Failed errno = %d", status);
        // Some allocators leave a handle behind on failure; the caller must see no buffer.
        if (*handle != nullptr) {
            android::GraphicBufferAllocator::get().free(*handle);
            *handle = nullptr;
        }
    }
}

void GrallocHelper::FreeBuffer(native_handle const** handle) {
    android::GraphicBufferAllocator::get().free(*handle);
}

int GrallocHelper::DumpOutputBuffer(int size, void* data, int /*reserved*/, int width, int height,
                                    long timestamp) {
    std::string dir(kPathSize, '\0');
    snprintf(dir.data(), kPathSize, "%s", kDumpDir);
    if (mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST) {
        ALOGE("Failed errno = %d", errno);
        return -1;
    }
    if (chmod(dir.c_str(), 0777) != 0) {
        ALOGE("Failed to change permissions on %s\n", dir.c_str());
        return -1;
    }
    if (data == nullptr) return -1;
    std::string name(kPathSize, '\0');
    snprintf(name.data(), kPathSize, "%s/output_layer_%d_%d_rgb888_cwb_%ld.raw", kDumpDir, width,
             height, timestamp);
    FILE* file = fopen(name.c_str(), "w+");
    if (file == nullptr) return -1;
    if (size > 0) fwrite(data, static_cast<size_t>(size), 1, file);
    fclose(file);
    return 0;
}

long getCurrentTime() {
    struct timeval tv {};
    gettimeofday(&tv, nullptr);
    return tv.tv_sec * 1000 + tv.tv_usec / 1000;
}
