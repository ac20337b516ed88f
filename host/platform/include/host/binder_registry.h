// Host-only controls of the in-process binder service registry (tests, device, simulator).
#pragma once

#include <android/binder_auto_utils.h>

#include <string>

namespace host::binder {

// Drops every registered service (NDK and libbinder registries alike).
void resetRegistry();
// Drops the NDK services only (part of resetRegistry()).
void resetRegistryNdk();
// Removes one libbinder (IServiceManager) service.
void removeLegacyService(const std::string& name);
// Removes one NDK service, as a vendor process that died would disappear.
void removeService(const std::string& instance);
// The next AServiceManager_addService calls fail with this exception code (0 turns it off).
void failAddService(binder_exception_t exception);
// Looks up an instance without going through the product's call path.
ndk::SpAIBinder lookup(const std::string& instance);

}  // namespace host::binder
