// libbinder stand-in: local binders, the libbinder service manager and Parcel.
#include <binder/Binder.h>
#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <host/binder_registry.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace android {

sp<IInterface> IBinder::queryLocalInterface(const String16& /*descriptor*/) {
    return nullptr;
}

const String16& BBinder::getInterfaceDescriptor() const {
    static const String16* empty = new String16();
    return *empty;
}

sp<IBinder> IInterface::asBinder(const IInterface* iface) {
    if (iface == nullptr) return nullptr;
    return const_cast<IInterface*>(iface)->onAsBinder();
}

sp<IBinder> IInterface::asBinder(const sp<IInterface>& iface) {
    return asBinder(iface.get());
}

namespace {

struct LegacyRegistry {
    std::mutex mutex;
    std::map<std::string, sp<IBinder>> services;
};

LegacyRegistry& legacyRegistry() {
    static LegacyRegistry* r = new LegacyRegistry();  // never destroyed, like the NDK registry
    return *r;
}

}  // namespace

sp<IBinder> IServiceManager::checkService(const String16& name) const {
    LegacyRegistry& r = legacyRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.services.find(name.string());
    return it != r.services.end() ? it->second : nullptr;
}

sp<IBinder> IServiceManager::getService(const String16& name) const {
    return checkService(name);
}

status_t IServiceManager::addService(const String16& name, const sp<IBinder>& service,
                                     bool /*allowIsolated*/, int /*dumpsysPriority*/) {
    if (service == nullptr || name.size() == 0) return BAD_VALUE;
    sp<IBinder> replaced;
    LegacyRegistry& r = legacyRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    sp<IBinder>& slot = r.services[name.string()];
    replaced = std::exchange(slot, service);
    return OK;
}

std::vector<String16> IServiceManager::listServices(int /*dumpsysPriority*/) {
    LegacyRegistry& r = legacyRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    std::vector<String16> names;
    for (const auto& entry : r.services) names.emplace_back(entry.first.c_str());
    return names;
}

sp<IServiceManager> defaultServiceManager() {
    // One manager for the life of the process; the extra reference keeps it from being deleted.
    static IServiceManager* manager = [] {
        auto* m = new IServiceManager();
        m->incStrong(nullptr);
        return m;
    }();
    return manager;
}

// --- Parcel ---

void Parcel::freeData() {
    mData.clear();
    mData.shrink_to_fit();
    mPosition = 0;
}

status_t Parcel::write(const void* value, size_t size) {
    if (mPosition > INT32_MAX) return BAD_VALUE;
    size_t end = mPosition + size;
    if (end > mData.size()) mData.resize(end);
    memcpy(mData.data() + mPosition, value, size);
    mPosition = end;
    return OK;
}

status_t Parcel::read(void* out, size_t size) const {
    if (mPosition > mData.size() || mData.size() - mPosition < size) return NOT_ENOUGH_DATA;
    memcpy(out, mData.data() + mPosition, size);
    mPosition += size;
    return OK;
}

status_t Parcel::writeInt32(int32_t value) {
    return write(&value, sizeof(value));
}
status_t Parcel::writeUint32(uint32_t value) {
    return write(&value, sizeof(value));
}
status_t Parcel::writeInt64(int64_t value) {
    return write(&value, sizeof(value));
}
status_t Parcel::writeUint64(uint64_t value) {
    return write(&value, sizeof(value));
}
status_t Parcel::writeFloat(float value) {
    return write(&value, sizeof(value));
}
status_t Parcel::writeBool(bool value) {
    return writeInt32(value ? 1 : 0);
}

status_t Parcel::readInt32(int32_t* out) const {
    return read(out, sizeof(*out));
}
status_t Parcel::readUint32(uint32_t* out) const {
    return read(out, sizeof(*out));
}
status_t Parcel::readInt64(int64_t* out) const {
    return read(out, sizeof(*out));
}
status_t Parcel::readUint64(uint64_t* out) const {
    return read(out, sizeof(*out));
}
status_t Parcel::readFloat(float* out) const {
    return read(out, sizeof(*out));
}
status_t Parcel::readBool(bool* out) const {
    int32_t v = 0;
    status_t status = readInt32(&v);
    if (status == OK) *out = v != 0;
    return status;
}

namespace {

template <typename T>
T readOrZero(const Parcel& parcel, status_t (Parcel::*reader)(T*) const) {
    T value{};
    return (parcel.*reader)(&value) == OK ? value : T{};
}

}  // namespace

int32_t Parcel::readInt32() const {
    return readOrZero<int32_t>(*this, &Parcel::readInt32);
}
uint32_t Parcel::readUint32() const {
    return readOrZero<uint32_t>(*this, &Parcel::readUint32);
}
int64_t Parcel::readInt64() const {
    return readOrZero<int64_t>(*this, &Parcel::readInt64);
}
uint64_t Parcel::readUint64() const {
    return readOrZero<uint64_t>(*this, &Parcel::readUint64);
}
float Parcel::readFloat() const {
    return readOrZero<float>(*this, &Parcel::readFloat);
}
bool Parcel::readBool() const {
    return readOrZero<bool>(*this, &Parcel::readBool);
}

std::vector<int32_t> Parcel::host_ints() const {
    std::vector<int32_t> ints(mData.size() / sizeof(int32_t));
    if (!ints.empty()) memcpy(ints.data(), mData.data(), ints.size() * sizeof(int32_t));
    return ints;
}

}  // namespace android

namespace host::binder {

void resetRegistry() {
    std::map<std::string, android::sp<android::IBinder>> dropped;
    {
        android::LegacyRegistry& r = android::legacyRegistry();
        std::lock_guard<std::mutex> lock(r.mutex);
        dropped.swap(r.services);
    }
    // Services are released outside the lock: their destructors may use the service manager.
    dropped.clear();
    resetRegistryNdk();
}

void removeLegacyService(const std::string& name) {
    android::sp<android::IBinder> dropped;
    android::LegacyRegistry& r = android::legacyRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.services.find(name);
    if (it != r.services.end()) {
        dropped = std::move(it->second);
        r.services.erase(it);
    }
}

}  // namespace host::binder
