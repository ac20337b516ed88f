// Host stand-in for <android/binder_interface_utils.h>: SharedRefBase, ICInterface and the base
// classes of generated stubs (BnCInterface) and proxies (BpCInterface).
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <memory>
#include <mutex>
#include <utility>

namespace ndk {

class SharedRefBase {
  public:
    SharedRefBase() = default;
    virtual ~SharedRefBase() = default;

    template <class T = SharedRefBase>
    std::shared_ptr<T> ref() {
        return std::static_pointer_cast<T>(mThis.lock());
    }
    template <class T = SharedRefBase>
    std::shared_ptr<const T> ref() const {
        return std::static_pointer_cast<const T>(mThis.lock());
    }

    // The only way to create these objects, so that ref() always works.
    template <class T, class... Args>
    static std::shared_ptr<T> make(Args&&... args) {
        std::shared_ptr<T> t(new T(std::forward<Args>(args)...));
        static_cast<SharedRefBase*>(t.get())->mThis = t;
        return t;
    }

  private:
    std::weak_ptr<SharedRefBase> mThis;
};

class ICInterface : public SharedRefBase {
  public:
    ICInterface() = default;
    ~ICInterface() override = default;

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
        return STATUS_OK;
    }

    // A class whose local binders hold a strong reference to their interface object.
    static inline AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                              AIBinder_Class_onTransact onTransact) {
        AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, Data::onCreate,
                                                      Data::onDestroy, onTransact);
        if (clazz != nullptr) AIBinder_Class_setOnDump(clazz, Data::onDump);
        return clazz;
    }
    // The local object behind binder, or null for a proxy or a binder of a foreign class.
    static inline std::shared_ptr<ICInterface> asInterface(AIBinder* binder) {
        if (binder == nullptr) return nullptr;
        void* userData = AIBinder_getUserData(binder);
        if (userData == nullptr) return nullptr;
        return static_cast<Data*>(userData)->interface;
    }

  private:
    struct Data {
        std::shared_ptr<ICInterface> interface;
        static void* onCreate(void* args) {
            return new Data{static_cast<ICInterface*>(args)->ref<ICInterface>()};
        }
        static void onDestroy(void* userData) { delete static_cast<Data*>(userData); }
        static binder_status_t onDump(AIBinder* binder, int fd, const char** args,
                                      uint32_t numArgs) {
            std::shared_ptr<ICInterface> object = asInterface(binder);
            return object != nullptr ? object->dump(fd, args, numArgs) : STATUS_UNEXPECTED_NULL;
        }
    };
};

template <typename INTERFACE>
class BnCInterface : public INTERFACE {
  public:
    BnCInterface() = default;
    ~BnCInterface() override = default;

    // The same binder while anyone holds it, so that its identity means this object.
    SpAIBinder asBinder() final {
        std::lock_guard<std::mutex> lock(mMutex);
        SpAIBinder binder;
        if (mWeakBinder.get() != nullptr) binder.set(AIBinder_Weak_promote(mWeakBinder.get()));
        if (binder.get() == nullptr) {
            binder = createBinder();
            mWeakBinder.set(AIBinder_Weak_new(binder.get()));
        }
        return binder;
    }
    bool isRemote() final { return false; }

  protected:
    virtual SpAIBinder createBinder() = 0;

  private:
    std::mutex mMutex;
    ScopedAIBinder_Weak mWeakBinder;
};

template <typename INTERFACE>
class BpCInterface : public INTERFACE {
  public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    ~BpCInterface() override = default;

    SpAIBinder asBinder() final { return mBinder; }
    bool isRemote() final { return AIBinder_isRemote(mBinder.get()); }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(asBinder().get(), fd, args, numArgs);
    }

  private:
    SpAIBinder mBinder;
};

}  // namespace ndk
