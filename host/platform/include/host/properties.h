// Host-only control of the system property store behind <cutils/properties.h>.
#pragma once

#include <string>

namespace host::properties {

// Sets a property with none of property_set's restrictions (as init would on boot).
void set(const std::string& key, const std::string& value);
// Forgets every property.
void clear();

}  // namespace host::properties
