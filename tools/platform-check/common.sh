# Sourced by the platform-check stages: failure reporting and the tree's paths.

status=0
# fail FILE MESSAGE...: one failure, named by the file it is about.
fail() {
    local file="$1"
    shift
    echo "$file: $*"
    status=1
}

# require COMMAND PACKAGE: a tool the stage cannot run without.
require() {
    if ! command -v "$1" >/dev/null 2>&1; then
        fail "$1" "not installed (Debian package $2)"
        return 1
    fi
}

aidl_bin="$root/out/host/linux-x86/bin/aidl"
display_config_aidl="$root/vendor/qcom/opensource/interfaces/display/config/aidl"
common_aidl="$root/hardware/interfaces/common/aidl"
graphics_common_aidl="$root/hardware/interfaces/graphics/common/aidl"

# The versions of the vendor display-config interface the library's build file can select.
display_config_versions() {
    grep -o 'vendor\.qti\.hardware\.display\.config-V[0-9]*-ndk' \
            multimedia/display/cwb/aidl/qcom/Android.bp |
        sed 's/.*-V\([0-9]*\)-ndk/\1/' | sort -un
}
