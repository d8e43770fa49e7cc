// What every adapter of Registry must do. A rig brings an empty registry and fills it from behind,
// before the port is used:
//
//     void SetString(RegistryRoot, TextView sKey, TextView sName, TextView sText);  // terminated
//     void SetUnterminated(RegistryRoot, TextView sKey, TextView sName, TextView sAscii);
//     void SetBinary(RegistryRoot, TextView sKey, TextView sName, std::vector<std::uint8_t>);
//     Registry& Port();
#pragma once

#include <cstdint>
#include <vector>

#include "platform/Registry.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

using RegistryBytes = std::vector<std::uint8_t>;

template <typename Rig>
class RegistryContract : public ::testing::Test {
  protected:
    static constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
    static constexpr TextView kKey = u"Software\\Orvo\\Version";

    Registry& Port() { return m_rig.Port(); }

    Registry::KeyHandle Open(TextView sKey = kKey) {
        Registry::KeyHandle key = 0;
        EXPECT_EQ(Port().OpenKey(kMachine, sKey, key), Registry::kSuccess) << Printable(sKey);
        return key;
    }

    // The value as a reader takes it: its size first, then its bytes.
    RegistryBytes Read(Registry::KeyHandle key, TextView sName) {
        RegistryBytes bytes(Port().QueryValue(key, sName, {}));
        EXPECT_EQ(Port().QueryValue(key, sName, bytes), bytes.size());
        return bytes;
    }

    Rig m_rig;
};

TYPED_TEST_SUITE_P(RegistryContract);

TYPED_TEST_P(RegistryContract, AMissingKeyIsNotOpened) {
    Registry::KeyHandle key = 77;
    EXPECT_EQ(this->Port().OpenKey(this->kMachine, u"Software\\Nobody", key),
              Registry::kFileNotFound);
}

TYPED_TEST_P(RegistryContract, AKeyBelongsToItsRoot) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"VW");
    Registry::KeyHandle key = 0;
    EXPECT_EQ(this->Port().OpenKey(RegistryRoot::CurrentUser, this->kKey, key),
              Registry::kFileNotFound);
}

TYPED_TEST_P(RegistryContract, AStringComesWithItsTerminator) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"abc");
    EXPECT_EQ(this->Read(this->Open(), u"Customer"), (RegistryBytes{'a', 'b', 'c', 0}));
}

TYPED_TEST_P(RegistryContract, AnEmptyStringIsItsTerminator) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"");
    EXPECT_EQ(this->Read(this->Open(), u"Customer"), RegistryBytes{0});
}

TYPED_TEST_P(RegistryContract, AStringStoredWithoutTerminatorComesWithout) {
    this->m_rig.SetUnterminated(this->kMachine, this->kKey, u"Customer", u"abc");
    EXPECT_EQ(this->Read(this->Open(), u"Customer"), (RegistryBytes{'a', 'b', 'c'}));
}

TYPED_TEST_P(RegistryContract, StringsAreInTheEightBitPage) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"Müller €");
    EXPECT_EQ(this->Read(this->Open(), u"Customer"),
              (RegistryBytes{'M', 0xFC, 'l', 'l', 'e', 'r', ' ', 0x80, 0}));
}

TYPED_TEST_P(RegistryContract, OtherDataComesAsStored) {
    this->m_rig.SetBinary(this->kMachine, this->kKey, u"Blob", {0, 1, 0xFE, 0xFF});
    EXPECT_EQ(this->Read(this->Open(), u"Blob"), (RegistryBytes{0, 1, 0xFE, 0xFF}));
}

TYPED_TEST_P(RegistryContract, AMissingValueHasNoSize) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"VW");
    RegistryBytes buffer{7, 7};
    EXPECT_EQ(this->Port().QueryValue(this->Open(), u"Nothing", buffer), 0U);
    EXPECT_EQ(buffer, (RegistryBytes{7, 7}));
}

TYPED_TEST_P(RegistryContract, ASmallBufferTakesWhatFits) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"abc");
    RegistryBytes buffer{7, 7, 7};
    EXPECT_EQ(this->Port().QueryValue(this->Open(), u"Customer", std::span(buffer).first(2)), 4U);
    EXPECT_EQ(buffer, (RegistryBytes{'a', 'b', 7}));
}

TYPED_TEST_P(RegistryContract, ALargeBufferKeepsItsRest) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"a");
    RegistryBytes buffer{7, 7, 7};
    EXPECT_EQ(this->Port().QueryValue(this->Open(), u"Customer", buffer), 2U);
    EXPECT_EQ(buffer, (RegistryBytes{'a', 0, 7}));
}

TYPED_TEST_P(RegistryContract, NamesIgnoreCase) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"VW");
    EXPECT_EQ(this->Read(this->Open(u"SOFTWARE\\orvo\\VERSION"), u"cUSTOMER").size(), 3U);
}

TYPED_TEST_P(RegistryContract, TheKeysAboveAreThereToo) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"VW");
    for (const TextView sKey : {u"", u"Software", u"Software\\Orvo"})
        EXPECT_EQ(this->Port().QueryValue(this->Open(sKey), u"Customer", {}), 0U);
}

TYPED_TEST_P(RegistryContract, TheDefaultValueHasTheEmptyName) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"", u"x");
    EXPECT_EQ(this->Read(this->Open(), u""), (RegistryBytes{'x', 0}));
}

TYPED_TEST_P(RegistryContract, AClosedHandleGivesNothing) {
    this->m_rig.SetString(this->kMachine, this->kKey, u"Customer", u"VW");
    const Registry::KeyHandle first = this->Open(), second = this->Open();
    EXPECT_NE(first, second);
    this->Port().CloseKey(first);
    this->Port().CloseKey(first);
    this->Port().CloseKey(12345);
    EXPECT_EQ(this->Port().QueryValue(first, u"Customer", {}), 0U);
    EXPECT_EQ(this->Port().QueryValue(second, u"Customer", {}), 3U);
}

REGISTER_TYPED_TEST_SUITE_P(RegistryContract, AMissingKeyIsNotOpened, AKeyBelongsToItsRoot,
                            AStringComesWithItsTerminator, AnEmptyStringIsItsTerminator,
                            AStringStoredWithoutTerminatorComesWithout, StringsAreInTheEightBitPage,
                            OtherDataComesAsStored, AMissingValueHasNoSize,
                            ASmallBufferTakesWhatFits, ALargeBufferKeepsItsRest, NamesIgnoreCase,
                            TheKeysAboveAreThereToo, TheDefaultValueHasTheEmptyName,
                            AClosedHandleGivesNothing);

}  // namespace nomira::testing
