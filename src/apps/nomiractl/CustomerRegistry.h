// A registry in which the customer is another one; everything else is as it stands.
#pragma once

#include <map>
#include <string>

#include "platform/Registry.h"

namespace nomira::companion {

class CustomerRegistry : public Registry {
  public:
    // `customer` in the 8-bit code page; empty for no customer at all.
    CustomerRegistry(Registry& inner, std::string customer);

    std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) override;
    std::uint32_t QueryValue(KeyHandle key, TextView sValueName,
                             std::span<std::uint8_t> buffer) override;
    void CloseKey(KeyHandle key) override;

  private:
    Registry& m_inner;
    std::string m_customer;  // with its terminator
    bool m_bKeyExists = false;
    KeyHandle m_innerKey = 0;
};

}  // namespace nomira::companion
