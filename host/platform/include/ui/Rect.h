// Host stand-in for <ui/Rect.h>: an integer rectangle, right and bottom exclusive.
#pragma once

#include <cstdint>

namespace android {

class Rect {
  public:
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    Rect() = default;
    Rect(int32_t w, int32_t h) : right(w), bottom(h) {}
    Rect(int32_t l, int32_t t, int32_t r, int32_t b) : left(l), top(t), right(r), bottom(b) {}

    int32_t width() const { return right - left; }
    int32_t height() const { return bottom - top; }
    bool isEmpty() const { return width() <= 0 || height() <= 0; }
    bool isValid() const { return width() >= 0 && height() >= 0; }

    bool operator==(const Rect& o) const {
        return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
    }
    bool operator!=(const Rect& o) const { return !(*this == o); }
};

}  // namespace android
