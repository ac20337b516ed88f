package vendor.zarel.hardware.cwb;

/**
 * Result of a request.
 */
@VintfStability
@Backing(type="int")
enum Error {
    /** The request was served. */
    NONE = 0,
    /** The request could not be served. */
    FAILED = 1,
    /** An argument is out of range. */
    INVALID_ARGUMENT = 2,
    /** The display is off, so there is nothing to capture. */
    SCREEN_OFF = 3,
}
