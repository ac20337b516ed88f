// Host stand-in for <android/binder_interface_utils.h>: SharedRefBase, ICInterface, BnCInterface.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <memory>
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
};

template <typename INTERFACE>
class BnCInterface : public INTERFACE {
  public:
    BnCInterface() = default;
    ~BnCInterface() override = default;

    // Each call makes a fresh in-process binder holding the object; identity of the binder itself
    // is never relied on, only the object behind it.
    SpAIBinder asBinder() final { return createBinder(); }
    bool isRemote() final { return false; }

  protected:
    virtual SpAIBinder createBinder() = 0;
};

}  // namespace ndk
