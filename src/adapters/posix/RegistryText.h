// The text format that the registry editor exports, read into keys and values.
//
// Both versions are read: "REGEDIT4", whose text is in the 8-bit page, and "Windows Registry
// Editor Version 5.00", UTF-16 with a mark in front; an editor may have saved the latter as UTF-8
// or in the 8-bit page. A line that is none of the format is passed over and becomes a finding.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "langtools/CodePage.h"
#include "langtools/Text.h"
#include "platform/Registry.h"

namespace nomira::posix {

struct RegistryFinding {
    int nLine = 0;  // from 1; 0 for the file as a whole
    std::string sWhat;
    bool operator==(const RegistryFinding&) const = default;
};

struct RegistryText {
    // Data as the 8-bit query gives it: string types (1, 2, 7) in the 8-bit page, with a
    // terminator if they were stored with one; the others as stored.
    using Bytes = std::vector<std::uint8_t>;
    using Values = std::map<Text, Bytes>;  // by name in upper case; the default value is u""
    using Path = std::pair<RegistryRoot, Text>;
    // Where a value stands in the file, and the registry's number for its type.
    struct Origin {
        int nLine = 0;
        std::uint32_t nType = 0;
    };

    std::map<Path, Values> keys;                      // by path in upper case, parents included
    std::map<std::pair<Path, Text>, Origin> origins;  // of values, by path and name
    std::vector<RegistryFinding> findings;
};

// A key's path in the form in which RegistryText holds it.
Text FoldedKey(TextView sKey);

// Never fails. Later lines win over earlier ones; [-key] takes away a key and all below it, and
// "name"=- a value. Keys of the roots that the program doesn't read are passed over silently.
RegistryText ParseRegistryText(std::string_view bytes, const CodePage& page);

}  // namespace nomira::posix
