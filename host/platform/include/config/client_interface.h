// Host stand-in for the chip vendor's legacy display-config client header. The library uses only
// the callback type, which the real header takes from config_defs.h beside it.
#pragma once

#include "config_defs.h"
