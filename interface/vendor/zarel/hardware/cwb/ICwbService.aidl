package vendor.zarel.hardware.cwb;

import vendor.zarel.hardware.cwb.Error;
import vendor.zarel.hardware.cwb.Histogram;
import vendor.zarel.hardware.cwb.ICwbCallback;
import vendor.zarel.hardware.cwb.Rect;
import vendor.zarel.hardware.cwb.Rgb;

/**
 * Statistics of what the display shows, taken from frames captured through the display's
 * concurrent writeback. Registered as "vendor.zarel.hardware.cwb.ICwbService/default".
 *
 * The order of the methods fixes their transaction codes: new methods go at the end only.
 */
@VintfStability
interface ICwbService {
    /**
     * Average colour of rect on the display being sampled, from a fresh capture or, while the
     * screen content has not changed, from the per-rectangle cache. rect is in pixels of the
     * screen as the user sees it, or all four fields negative for fractions (low 24 bits in units
     * of 1/100000 of the screen size).
     *
     * The low 16 bits of the result are an Error. The high 16 bits carry the colour state of the
     * region: bit 0 (0x10000) set when the region is one pure colour, bit 1 (0x20000) set when
     * it is black and white only.
     */
    Error getRGBValue(in Rect rect, out Rgb rgb);

    /**
     * Appends exactly one value: the mean luma of rect (0.0 to 1.0), or 0.0 on failure.
     */
    Error getLumasValue(in Rect rect, out float[] lumas);

    /**
     * Per-channel histogram of rect: for each level 0..255, the red, green and blue counts.
     * All zero on failure.
     */
    Error getHistogramValue(in Rect rect, out Histogram histogram);

    /**
     * Whether frames are captured after the display's colour post-processing (true) or before.
     */
    boolean getCwbPostProcessStatus();

    /**
     * Chooses where frames are captured: after colour post-processing (true) or before.
     */
    Error setCwbPostProcessStatus(boolean status);

    /**
     * Adds callback and tells it at once whether the service is available; it is told again
     * whenever that may have changed.
     */
    Error registerCallback(ICwbCallback callback);

    /**
     * Removes every registration of callback.
     */
    Error unregisterCallback(ICwbCallback callback);

    /**
     * Lets the service answer statistics requests again and tells the callbacks. Returns true.
     */
    boolean enable();

    /**
     * Makes statistics requests fail with FAILED and tells the callbacks. Returns true.
     */
    boolean disable();

    /**
     * Up to three switches, -1 leaves one unchanged: [0] debug logging, [1] frame dumps,
     * [2] AP-side colour post-processing switched off.
     */
    Error setDebug(in int[] debug);

    /**
     * Feature 1 (RGB, main display), 2 (luma) or 3 (RGB, secondary display) of rect, flattened
     * into values together with the interval during which the measured content was shown (boot
     * clock, high word first) and the panel loading (100000000 = 1.0).
     */
    Error getCwbValue(int featureId, in Rect rect, out int[] values);

    /**
     * Does nothing. Kept so that the methods after it keep their transaction codes.
     */
    void reserved(int arg0, int arg1);

    /**
     * Maps size bytes of fd, the client's region for getSharedData crops. The id is not used.
     * Fails with a service-specific error -1 for an invalid descriptor or a failed mapping.
     */
    Error initializeSharedMemory(int id, int size, in ParcelFileDescriptor fd);

    /**
     * Feature 2 selects the legacy capture mode, 3 the AI capture mode, 5 copies the crop rect
     * of the last captured frame into the region of initializeSharedMemory (timestamp, pixels,
     * 0xDEADBEEF; at most bufferSize bytes). values gets five status entries.
     */
    Error getSharedData(int featureId, in Rect rect, in ParcelFileDescriptor fd, int bufferSize,
            out int[] values);

    /**
     * Appends the main display's capture buffer height, then its row pitch in pixels (0, 0
     * before the first capture). The id is not used.
     */
    Error getScreenResolution(int id, out int[] values);

    /**
     * Unmaps the region mapped by initializeSharedMemory, if any. The ints are not used.
     */
    Error releaseSharedMemory(int id, int flags);
}
