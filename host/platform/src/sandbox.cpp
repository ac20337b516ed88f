// Link-time redirection of device paths (see <host/sandbox.h>).
#include <fcntl.h>
#include <host/sandbox.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

extern "C" {
int __real_open(const char* path, int flags, ...);
FILE* __real_fopen(const char* path, const char* mode);
int __real_mkdir(const char* path, mode_t mode);
int __real_chmod(const char* path, mode_t mode);
}

namespace {

// Folders whose contents the product reads or writes on a device.
constexpr const char* kDeviceFolders[] = {
        "/sys/kernel/zarel_display",
        "/odm",
        "/data/vendor/display",
};

bool isDevicePath(const char* path) {
    if (path == nullptr) return false;
    for (const char* folder : kDeviceFolders) {
        size_t length = strlen(folder);
        if (strncmp(path, folder, length) == 0 && (path[length] == '\0' || path[length] == '/')) {
            return true;
        }
    }
    return false;
}

struct Sandbox {
    std::mutex mutex;
    std::string root;
    std::map<std::string, size_t> opens;
};

Sandbox& sandbox() {
    static Sandbox* s = new Sandbox();  // never destroyed: files are opened until exit
    return *s;
}

// Only called for device paths, so other file access never takes the lock.
std::string redirect(const char* devicePath, bool countOpen) {
    Sandbox& s = sandbox();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (countOpen) ++s.opens[devicePath];
    return s.root.empty() ? std::string(devicePath) : s.root + devicePath;
}

}  // namespace

extern "C" int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
        va_list ap;
        va_start(ap, flags);
        mode = static_cast<mode_t>(va_arg(ap, int));
        va_end(ap);
    }
    if (!isDevicePath(path)) return __real_open(path, flags, mode);
    std::string target = redirect(path, true);
    return __real_open(target.c_str(), flags, mode);
}

extern "C" FILE* __wrap_fopen(const char* path, const char* mode) {
    if (!isDevicePath(path)) return __real_fopen(path, mode);
    std::string target = redirect(path, true);
    return __real_fopen(target.c_str(), mode);
}

extern "C" int __wrap_mkdir(const char* path, mode_t mode) {
    if (!isDevicePath(path)) return __real_mkdir(path, mode);
    std::string target = redirect(path, false);
    return __real_mkdir(target.c_str(), mode);
}

extern "C" int __wrap_chmod(const char* path, mode_t mode) {
    if (!isDevicePath(path)) return __real_chmod(path, mode);
    std::string target = redirect(path, false);
    return __real_chmod(target.c_str(), mode);
}

namespace host::sandbox {

void setRoot(const std::string& dir) {
    Sandbox& s = ::sandbox();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.root = dir;
    // A trailing slash would double the one every device path starts with.
    while (s.root.size() > 1 && s.root.back() == '/') s.root.pop_back();
}

std::string root() {
    Sandbox& s = ::sandbox();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.root;
}

std::string makeTempRoot() {
    const char* tmp = getenv("TMPDIR");
    std::string base = (tmp != nullptr && *tmp != '\0') ? tmp : "/tmp";
    std::string pattern = base + "/cwb-sandbox-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) return "";
    setRoot(pattern);
    return root();
}

std::string hostPath(const std::string& devicePath) {
    if (!isDevicePath(devicePath.c_str())) return devicePath;
    return redirect(devicePath.c_str(), false);
}

size_t openCount(const std::string& devicePath) {
    Sandbox& s = ::sandbox();
    std::lock_guard<std::mutex> lock(s.mutex);
    auto it = s.opens.find(devicePath);
    return it != s.opens.end() ? it->second : 0;
}

void resetCounts() {
    Sandbox& s = ::sandbox();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.opens.clear();
}

}  // namespace host::sandbox
