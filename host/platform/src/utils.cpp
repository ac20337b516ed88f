// libutils stand-ins: RefBase, String16, status names; and libui's bytesPerPixel.
#include <android/log.h>
#include <ui/PixelFormat.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace android {

// --- RefBase ---

void RefBase::incStrong(const void* /*id*/) const {
    int32_t previous = mStrong.fetch_add(1, std::memory_order_relaxed);
    if (previous != kInitialStrongValue) return;
    mStrong.fetch_sub(kInitialStrongValue, std::memory_order_relaxed);
    const_cast<RefBase*>(this)->onFirstRef();
}

void RefBase::forceIncStrong(const void* /*id*/) const {
    int32_t previous = mStrong.fetch_add(1, std::memory_order_relaxed);
    if (previous == kInitialStrongValue) {
        mStrong.fetch_sub(kInitialStrongValue, std::memory_order_relaxed);
    }
}

void RefBase::decStrong(const void* id) const {
    int32_t previous = mStrong.fetch_sub(1, std::memory_order_acq_rel);
    if (previous <= 0 || previous == kInitialStrongValue) {
        __android_log_print(ANDROID_LOG_FATAL, "RefBase", "decStrong() called on %p too many times",
                            static_cast<const void*>(this));
        abort();
    }
    if (previous == 1) {
        RefBase* self = const_cast<RefBase*>(this);
        self->onLastStrongRef(id);
        delete self;
    }
}

int32_t RefBase::getStrongCount() const {
    return mStrong.load(std::memory_order_relaxed);
}

RefBase::~RefBase() {
    int32_t strong = mStrong.load(std::memory_order_relaxed);
    if (strong != kInitialStrongValue && strong != 0) {
        __android_log_print(ANDROID_LOG_FATAL, "RefBase",
                            "RefBase: Explicit destruction with non-zero refcount = %d", strong);
        abort();
    }
}

// --- String16 ---

namespace {

std::u16string fromUtf8(const char* s, size_t length) {
    std::u16string out;
    out.reserve(length);
    size_t i = 0;
    while (i < length) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        char32_t cp;
        size_t extra;
        if (c < 0x80) {
            cp = c;
            extra = 0;
        } else if ((c & 0xE0) == 0xC0) {
            cp = c & 0x1F;
            extra = 1;
        } else if ((c & 0xF0) == 0xE0) {
            cp = c & 0x0F;
            extra = 2;
        } else if ((c & 0xF8) == 0xF0) {
            cp = c & 0x07;
            extra = 3;
        } else {
            break;  // malformed: keep what was decoded so far
        }
        if (i + extra >= length) break;  // truncated sequence
        for (size_t k = 1; k <= extra; ++k) {
            cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
        }
        i += extra + 1;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
    }
    return out;
}

void appendUtf8(std::string* out, char32_t cp) {
    if (cp < 0x80) {
        out->push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

}  // namespace

String16::String16(const char* utf8) : String16(utf8, utf8 != nullptr ? strlen(utf8) : 0) {}

String16::String16(const char* utf8, size_t length)
    : mData(utf8 != nullptr ? fromUtf8(utf8, length) : std::u16string()) {}

std::string String16::string() const {
    std::string out;
    out.reserve(mData.size());
    for (size_t i = 0; i < mData.size(); ++i) {
        char32_t c = mData[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < mData.size() && mData[i + 1] >= 0xDC00 &&
            mData[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (mData[i + 1] - 0xDC00);
            ++i;
        }
        appendUtf8(&out, c);
    }
    return out;
}

// --- status_t ---

std::string statusToString(status_t s) {
#define STATUS_CASE(x) \
    case x:            \
        return #x;
    switch (s) {
        STATUS_CASE(OK)
        STATUS_CASE(UNKNOWN_ERROR)
        STATUS_CASE(NO_MEMORY)
        STATUS_CASE(INVALID_OPERATION)
        STATUS_CASE(BAD_VALUE)
        STATUS_CASE(BAD_TYPE)
        STATUS_CASE(NAME_NOT_FOUND)
        STATUS_CASE(PERMISSION_DENIED)
        STATUS_CASE(NO_INIT)
        STATUS_CASE(ALREADY_EXISTS)
        STATUS_CASE(DEAD_OBJECT)
        STATUS_CASE(FAILED_TRANSACTION)
        STATUS_CASE(BAD_INDEX)
        STATUS_CASE(NOT_ENOUGH_DATA)
        STATUS_CASE(WOULD_BLOCK)
        STATUS_CASE(TIMED_OUT)
        STATUS_CASE(UNKNOWN_TRANSACTION)
        STATUS_CASE(FDS_NOT_ALLOWED)
        STATUS_CASE(UNEXPECTED_NULL)
    }
#undef STATUS_CASE
    return "Unknown error " + std::to_string(s);
}

// --- libui ---

uint32_t bytesPerPixel(PixelFormat format) {
    switch (format) {
        case PIXEL_FORMAT_RGBA_8888:
        case PIXEL_FORMAT_RGBX_8888:
        case PIXEL_FORMAT_BGRA_8888:
            return 4;
        case PIXEL_FORMAT_RGB_888:
            return 3;
        case PIXEL_FORMAT_RGB_565:
            return 2;
        default:
            return 0;
    }
}

}  // namespace android
