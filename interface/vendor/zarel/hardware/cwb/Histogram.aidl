package vendor.zarel.hardware.cwb;

/**
 * Pixel counts per level over a region: for each level 0..255 in turn, the red, green and blue
 * counters, so counts[3 * level + channel].
 */
@VintfStability
parcelable Histogram {
    int[768] counts;
}
