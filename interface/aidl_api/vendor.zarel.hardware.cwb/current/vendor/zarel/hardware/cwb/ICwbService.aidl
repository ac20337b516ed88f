///////////////////////////////////////////////////////////////////////////////
// THIS FILE IS IMMUTABLE. DO NOT EDIT IN ANY CASE.                          //
///////////////////////////////////////////////////////////////////////////////

// This file is a snapshot of an AIDL file. Do not edit it manually. There are
// two cases:
// 1). this is a frozen version file - do not edit this in any case.
// 2). this is a 'current' file. If you make a backwards compatible change to
//     the interface (from the latest frozen version), the build system will
//     prompt you to update this file with `m <name>-update-api`.
//
// You must not make a backward incompatible change to any AIDL file built
// with the aidl_interface module type with versions property set. The module
// type is used to build AIDL files in a way that they can be used across
// independently updatable components of the system. If a device is shipped
// with such a backward incompatible change, it has a high risk of breaking
// later when a module using the interface is updated, e.g., Mainline modules.

package vendor.zarel.hardware.cwb;
@VintfStability
interface ICwbService {
  vendor.zarel.hardware.cwb.Error getRGBValue(in vendor.zarel.hardware.cwb.Rect rect, out vendor.zarel.hardware.cwb.Rgb rgb);
  vendor.zarel.hardware.cwb.Error getLumasValue(in vendor.zarel.hardware.cwb.Rect rect, out float[] lumas);
  vendor.zarel.hardware.cwb.Error getHistogramValue(in vendor.zarel.hardware.cwb.Rect rect, out vendor.zarel.hardware.cwb.Histogram histogram);
  boolean getCwbPostProcessStatus();
  vendor.zarel.hardware.cwb.Error setCwbPostProcessStatus(boolean status);
  vendor.zarel.hardware.cwb.Error registerCallback(vendor.zarel.hardware.cwb.ICwbCallback callback);
  vendor.zarel.hardware.cwb.Error unregisterCallback(vendor.zarel.hardware.cwb.ICwbCallback callback);
  boolean enable();
  boolean disable();
  vendor.zarel.hardware.cwb.Error setDebug(in int[] debug);
  vendor.zarel.hardware.cwb.Error getCwbValue(int featureId, in vendor.zarel.hardware.cwb.Rect rect, out int[] values);
  void reserved(int arg0, int arg1);
  vendor.zarel.hardware.cwb.Error initializeSharedMemory(int id, int size, in ParcelFileDescriptor fd);
  vendor.zarel.hardware.cwb.Error getSharedData(int featureId, in vendor.zarel.hardware.cwb.Rect rect, in ParcelFileDescriptor fd, int bufferSize, out int[] values);
  vendor.zarel.hardware.cwb.Error getScreenResolution(int id, out int[] values);
  vendor.zarel.hardware.cwb.Error releaseSharedMemory(int id, int flags);
}
