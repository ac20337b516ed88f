// The session played when cwb-sim is run without a session file.
#pragma once

namespace cwbsim {

class DefaultSession {
  public:
    // The session text; examples/demo.cwb holds the same text.
    static const char* text();
    // One paragraph printed above the table.
    static const char* description();
};

}  // namespace cwbsim
