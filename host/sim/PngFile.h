// PNG pictures through libpng: frames to show on a panel, snapshots and plots to write.
#pragma once

#include <device/Frame.h>

#include <cstdint>
#include <string>
#include <vector>

namespace cwbsim {

class PngFile {
  public:
    // The image's size without decoding it; false with a reason when it is not a readable PNG.
    static bool size(const std::string& path, int* width, int* height, std::string* error);
    // Decodes any PNG as RGB: an alpha channel is dropped (not composited), grey and palette
    // images are expanded, 16-bit samples are reduced to 8 bits.
    static bool read(const std::string& path, host::device::Frame* out, std::string* error);
    static bool write(const std::string& path, const host::device::Frame& frame,
                      std::string* error);
    // The PNG file's bytes, for pictures carried inside another file.
    static bool encode(const host::device::Frame& frame, std::vector<uint8_t>* out,
                       std::string* error);
};

}  // namespace cwbsim
