package vendor.zarel.hardware.cwb;

/**
 * Average colour of a region, one value per channel.
 */
@VintfStability
parcelable Rgb {
    int r;
    int g;
    int b;
    /**
     * Further per-region values some requests ask for; empty when there are none.
     */
    int[] extra;
}
