#include "apps/nomiractl/CustomerRegistry.h"

#include "adapters/memory/MemoryMachine.h"
#include "frame/Settings.h"
#include "platform/Platform.h"
#include "testing/ForwardingPorts.h"
#include "testing/TextPrinting.h"

namespace nomira::companion {
namespace {

constexpr TextView kVersionKey = u"Software\\Orvo\\Version";

class CustomerRegistryTest : public ::testing::Test {
  protected:
    void UseCustomer(const std::string& sCustomer) {
        m_registry.emplace(m_watched, sCustomer);
        Platform platform = nomira::testing::PortsOf(m_machine);
        platform.registry = &*m_registry;
        SetPlatform(platform);
    }
    static Text Read(TextView sKey, TextView sValue) {
        Text sResult;
        return ReadRegistryString(RegistryRoot::LocalMachine, sKey, sValue, sResult);
    }

    memory::MemoryMachine m_machine;
    nomira::testing::ForwardingRegistry m_watched{m_machine.registry};
    std::optional<CustomerRegistry> m_registry;
};

TEST_F(CustomerRegistryTest, StandsInForAMissingKey) {
    UseCustomer("VW");
    EXPECT_EQ(GetCustomer(), u"VW");
    EXPECT_EQ(Read(kVersionKey, u"InstallationDir"), u"");
}

TEST_F(CustomerRegistryTest, GoesBeforeTheCustomerThatIsThere) {
    m_machine.registry.SetString(RegistryRoot::LocalMachine, kVersionKey, u"Customer", u"Other");
    UseCustomer("VW");
    EXPECT_EQ(GetCustomer(), u"VW");
    UseCustomer("");
    EXPECT_EQ(GetCustomer(), u"");
}

TEST_F(CustomerRegistryTest, LeavesAllElseAsItStands) {
    m_machine.registry.SetString(RegistryRoot::LocalMachine, kVersionKey, u"InstallationDir",
                                 u"C:\\TQX");
    m_machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Options\\ASCII",
                                 u"Name", u"ascii");
    UseCustomer("VW");
    EXPECT_EQ(Read(kVersionKey, u"InstallationDir"), u"C:\\TQX");
    EXPECT_EQ(Read(u"SOFTWARE\\orvo\\VERSION", u"customer"), u"VW");
    EXPECT_TRUE(IsAsciiOptionInstalled());
}

TEST_F(CustomerRegistryTest, ClosesEveryKeyThatItOpens) {
    m_machine.registry.SetString(RegistryRoot::LocalMachine, kVersionKey, u"InstallationDir", u"x");
    UseCustomer("VW");
    GetCustomer();
    Read(kVersionKey, u"InstallationDir");
    IsAsciiOptionInstalled();
    EXPECT_EQ(m_watched.nOpenKeys, 0);
}

}  // namespace
}  // namespace nomira::companion
