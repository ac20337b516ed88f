// Host stand-in for <utils/String16.h>: an immutable UTF-16 string (service names, descriptors).
#pragma once

#include <cstddef>
#include <string>

namespace android {

class String16 {
  public:
    String16() = default;
    // From UTF-8.
    explicit String16(const char* utf8);
    String16(const char* utf8, size_t length);
    explicit String16(const char16_t* utf16) : mData(utf16 != nullptr ? utf16 : u"") {}

    size_t size() const { return mData.size(); }
    const char16_t* c_str() const { return mData.c_str(); }
    // Host convenience: the UTF-8 form.
    std::string string() const;

    bool operator==(const String16& other) const { return mData == other.mData; }
    bool operator!=(const String16& other) const { return mData != other.mData; }
    bool operator<(const String16& other) const { return mData < other.mData; }

  private:
    std::u16string mData;
};

}  // namespace android
