// Host-only redirection of device paths into a sandbox folder.
//
// The product opens device files by their real paths. Every executable linked with
// host_platform wraps open, fopen, mkdir and chmod (-Wl,--wrap): a path under one of
//   /sys/kernel/zarel_display, /odm, /data/vendor/display
// (the folder itself or anything below it) becomes root() + path. Other paths, and all paths
// while no root is set, pass through unchanged. Calls made inside shared libraries (for example
// std::ifstream inside libstdc++) are not wrapped: device files must be opened with the C calls.
#pragma once

#include <cstddef>
#include <string>

namespace host::sandbox {

// "" turns redirection off.
void setRoot(const std::string& dir);
std::string root();
// Creates a fresh folder under $TMPDIR (or /tmp), makes it the root and returns it.
std::string makeTempRoot();
// Where a device path is redirected to (unchanged for other paths or with no root).
std::string hostPath(const std::string& devicePath);
// open/fopen calls made on devicePath (as the product spelled it), successful or not.
size_t openCount(const std::string& devicePath);
void resetCounts();

}  // namespace host::sandbox
