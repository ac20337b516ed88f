// Prints replies as a table (a header once, one row per reply) or as one JSON object per line.
#pragma once

#include <cstdio>
#include <string>

#include "Reply.h"

namespace cwbtool {

class ReplyPrinter {
  public:
    ReplyPrinter(FILE* out, bool json, bool timed) : mOut(out), mJson(json), mTimed(timed) {}

    // seconds: time since the first request, shown when the printer is timed (--watch).
    void print(const Reply& reply, double seconds);
    // A client callback notification.
    void event(bool status, double seconds);

    static std::string errorName(int32_t error);
    static std::string quote(const std::string& text);

  private:
    void header();

    FILE* mOut;
    bool mJson;
    bool mTimed;
    bool mHeaderDone = false;
};

}  // namespace cwbtool
