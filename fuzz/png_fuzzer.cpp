// Reads a PNG frame as cwb-sim does for a panel: the input is the file. Pictures the size check
// accepts above 2048 x 2048 are only measured, so that no input needs a gigabyte to decode.
#include <PngFile.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

constexpr int64_t kMaxDecodedPixels = 2048 * 2048;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("cwb_png", MFD_CLOEXEC);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (ftruncate(file, 0) != 0) abort();
    if (size > 0 && pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) abort();
    int width = 0;
    int height = 0;
    std::string error;
    if (!cwbsim::PngFile::size(path, &width, &height, &error)) {
        if (error.empty()) abort();
        return 0;
    }
    if (width <= 0 || height <= 0) abort();
    if (static_cast<int64_t>(width) * height > kMaxDecodedPixels) return 0;
    host::device::Frame frame;
    if (!cwbsim::PngFile::read(path, &frame, &error)) {
        if (error.empty()) abort();
        return 0;
    }
    if (frame.width != width || frame.height != height ||
        frame.rgb.size() != static_cast<size_t>(width) * height * 3) {
        fprintf(stderr, "decoded %dx%d (%zu bytes), measured %dx%d\n", frame.width, frame.height,
                frame.rgb.size(), width, height);
        abort();
    }
    return 0;
}
