package vendor.zarel.hardware.cwb;

/**
 * Implemented by clients that want to know when capturing starts or stops.
 */
@VintfStability
interface ICwbCallback {
    /**
     * Called when the capture state changes.
     *
     * @param status true when frames are being captured again, false when capturing stopped.
     */
    oneway void notifyCwbStatus(boolean status);
}
