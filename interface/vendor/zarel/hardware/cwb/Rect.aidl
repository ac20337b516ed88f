package vendor.zarel.hardware.cwb;

/**
 * A region of the display in pixels. right and bottom are exclusive.
 */
@VintfStability
parcelable Rect {
    int left;
    int top;
    int right;
    int bottom;
}
