#include "apps/nomiractl/CustomerRegistry.h"

#include <algorithm>
#include <utility>

#include "frame/Settings.h"
#include "langtools/BasicText.h"

namespace nomira::companion {
namespace {

constexpr Registry::KeyHandle kOwnKey = 0xFFFFFFFF;

}  // namespace

CustomerRegistry::CustomerRegistry(Registry& inner, std::string customer)
    : m_inner(inner), m_customer(std::move(customer)) {
    m_customer += '\0';
}

std::int32_t CustomerRegistry::OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) {
    if (root != kCustomerSetting.root || !EqualNoCase(sKey, kCustomerSetting.sKey))
        return m_inner.OpenKey(root, sKey, key);
    m_bKeyExists = m_inner.OpenKey(root, sKey, m_innerKey) == kSuccess;
    key = kOwnKey;
    return kSuccess;
}

std::uint32_t CustomerRegistry::QueryValue(KeyHandle key, TextView sValueName,
                                           std::span<std::uint8_t> buffer) {
    if (key != kOwnKey) return m_inner.QueryValue(key, sValueName, buffer);
    if (!EqualNoCase(sValueName, kCustomerSetting.sValue))
        return m_bKeyExists ? m_inner.QueryValue(m_innerKey, sValueName, buffer) : 0;
    std::copy_n(m_customer.begin(), std::min(m_customer.size(), buffer.size()), buffer.begin());
    return static_cast<std::uint32_t>(m_customer.size());
}

void CustomerRegistry::CloseKey(KeyHandle key) {
    if (key != kOwnKey) return m_inner.CloseKey(key);
    if (m_bKeyExists) m_inner.CloseKey(m_innerKey);
    m_bKeyExists = false;
}

}  // namespace nomira::companion
