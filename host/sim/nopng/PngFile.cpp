// PngFile for a build without libpng (the AArch64 cross build has none for its target): every
// call fails and says why, so the PNG commands report it and the rest of cwb-sim works.
#include "../PngFile.h"

namespace cwbsim {

namespace {

const char kUnavailable[] = ": PNG is unavailable, this cwb-sim was built without libpng";

}  // namespace

bool PngFile::size(const std::string& path, int* width, int* height, std::string* error) {
    *error = "cannot read PNG " + path + kUnavailable;
    return false;
}

bool PngFile::read(const std::string& path, host::device::Frame* out, std::string* error) {
    *error = "cannot read PNG " + path + kUnavailable;
    return false;
}

bool PngFile::write(const std::string& path, const host::device::Frame& frame, std::string* error) {
    *error = "cannot write PNG " + path + kUnavailable;
    return false;
}

bool PngFile::encode(const host::device::Frame& frame, std::vector<uint8_t>* out,
                     std::string* error) {
    *error = std::string("cannot encode PNG") + kUnavailable;
    return false;
}

}  // namespace cwbsim
