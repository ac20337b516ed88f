/*
 * This file is auto-generated.  DO NOT MODIFY.
 * Using: out/host/linux-x86/bin/aidl --lang=ndk --structured --stability vintf --min_sdk_version current --version 2 --hash 66cb995013d438e57677eaddc53511c45fda14dd -I interface/aidl_api/vendor.zarel.hardware.cwb/2 -h host/aidl/include -o host/aidl/src interface/aidl_api/vendor.zarel.hardware.cwb/2/vendor/zarel/hardware/cwb/Histogram.aidl
 */
#error TODO(b/111362593) defined_types do not have bn classes
