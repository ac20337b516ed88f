#include "DefaultSession.h"

namespace cwbsim {

const char* DefaultSession::text() {
    return R"(# cwb-sim's built-in demonstration (examples/demo.cwb holds the same session).
# A phone with one 1080 x 2400 panel at 60 Hz showing colour bars over a grey ramp, with a white
# label on the black bar; panel APL reading and two colour bands are configured.
prop ro.vendor.zarel.display.cwb.display_id 0
prop ro.vendor.zarel.display.cwb.ct_range 0,10,245,255
prop ro.vendor.zarel.display.cwb.apl_read_support 1
panel main 1080x2400@60
frame main pattern bars
frame main paint 975,700,1050,900 255,255,255
file apl 0f a0
qservice 303 1
qservice 304 2000

boot
registerCallback demo
host setPowerMode 0 2

# Colour and verdicts; every new rectangle needs a capture, at most one per 50 ms.
sleep 60
getRGBValue 0,0,135,1600
sleep 60
getRGBValue 135,0,270,1600
sleep 60
getRGBValue 100,0,170,1600
sleep 60
getRGBValue 960,650,1065,950

# Luma and histogram of the grey ramp.
sleep 60
getLumasValue 0,1600,1080,2400
sleep 60
getHistogramValue 0,1600,1080,2400

# The generic request: colour with the time it was shown and the panel loading.
sleep 60
getCwbValue 1 560,20,640,100

# A 4 x 2 crop across the white and yellow bars, copied through shared memory:
# 8 bytes of timestamp, 24 bytes of pixels, then the marker EF BE AD DE.
initializeSharedMemory 30020
getSharedData 5 133,0,137,2 30020
readShared 0 36
getScreenResolution
releaseSharedMemory
)";
}

const char* DefaultSession::description() {
    return "cwb-sim built-in session: main panel 1080x2400 at 60 Hz showing colour bars over a "
           "grey ramp\n"
           "(a white label on the black bar), panel APL 0f a0 with UirState 1 and 2000 nits, "
           "ct_range 0,10,245,255.\n"
           "Play your own with: cwb-sim SESSION [--json] [--logs]; examples/ has more.\n";
}

}  // namespace cwbsim
