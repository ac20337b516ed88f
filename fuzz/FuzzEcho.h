// CWB_FUZZ_ECHO=1 prints the service's log lines while a fuzzer runs, to read a crash's lead-up.
#pragma once

#include <host/log_capture.h>

#include <cstdlib>

namespace cwbfuzz {

inline void echoLogsWhenAsked() {
    const char* echo = getenv("CWB_FUZZ_ECHO");
    host::log::setEcho(echo != nullptr && echo[0] == '1');
}

}  // namespace cwbfuzz
