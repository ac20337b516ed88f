// cwb: asks the running ICwbService one question per sub-command. The whole program is this
// function, so that host tests can run it in-process next to the service; main() only calls it.
#pragma once

#include <cstdio>

namespace cwbtool {

// Exit status: 0 the request ran (whatever the service answered), 1 something could not be done
// (no service, no shared memory), 2 malformed arguments.
int cwbMain(int argc, char** argv, FILE* out, FILE* err);

}  // namespace cwbtool
