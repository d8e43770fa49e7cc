// Port: the system's registry, as far as the settings need it. Read only.
#pragma once

#include <cstdint>
#include <span>

#include "langtools/Text.h"

namespace nomira {

// The system's own root handles.
enum class RegistryRoot : std::uint32_t {
    CurrentUser = 0x80000001,   // HKEY_CURRENT_USER
    LocalMachine = 0x80000002,  // HKEY_LOCAL_MACHINE
};

class Registry {
  public:
    using KeyHandle = std::uint32_t;
    static constexpr std::int32_t kSuccess = 0;
    static constexpr std::int32_t kFileNotFound = 2;  // the system's code for a missing key

    virtual ~Registry() = default;

    // Opens `sKey` (parts separated by "\", case ignored) below the root and gives its handle.
    // Returns kSuccess, or the system's error code, such as kFileNotFound.
    virtual std::int32_t OpenKey(RegistryRoot root, TextView sKey, KeyHandle& key) = 0;

    // The size in bytes of the value's data (value names ignore case), 0 if there is no such
    // value. Copies as much of the data as fits into `buffer`; an empty buffer only asks the size.
    // Data of the string types comes in the system's 8-bit code page with its terminator, if it
    // was stored with one; data of any other type as stored. The type itself is not told.
    virtual std::uint32_t QueryValue(KeyHandle key, TextView sValueName,
                                     std::span<std::uint8_t> buffer) = 0;

    // Closes a handle that OpenKey gave; any other handle is ignored.
    virtual void CloseKey(KeyHandle key) = 0;
};

}  // namespace nomira
