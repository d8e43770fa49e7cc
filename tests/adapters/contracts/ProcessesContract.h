// What every adapter of Processes must do. A rig brings a machine without processes and starts
// some:
//
//     void Start(std::uint32_t nId, TextView sPath);  // in ascending order of ids
//     void StartUnreadable(std::uint32_t nId);        // one that can't be asked for its name
//     Processes& Port();                              // sees four ids at most
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Processes.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

using Ids = std::vector<std::uint32_t>;

template <typename Rig>
class ProcessesContract : public ::testing::Test {
  protected:
    Rig m_rig;
};

TYPED_TEST_SUITE_P(ProcessesContract);

TYPED_TEST_P(ProcessesContract, TheSystemIsOfTheNtFamily) {
    EXPECT_EQ(this->m_rig.Port().PlatformId(), Processes::kPlatformNt);
}

TYPED_TEST_P(ProcessesContract, AMachineCanBeWithoutProcesses) {
    EXPECT_EQ(this->m_rig.Port().EnumProcesses(), Ids{});
}

TYPED_TEST_P(ProcessesContract, EveryProcessHasItsIdAndPath) {
    this->m_rig.Start(4, u"C:\\tqx\\VEXON3.EXE");
    this->m_rig.Start(100, u"C:\\tqx\\OrvoDB.exe");
    EXPECT_EQ(this->m_rig.Port().EnumProcesses(), (Ids{4, 100}));
    EXPECT_EQ(this->m_rig.Port().ModuleFileName(4), Text(u"C:\\tqx\\VEXON3.EXE"));
    EXPECT_EQ(this->m_rig.Port().ModuleFileName(100), Text(u"C:\\tqx\\OrvoDB.exe"));
}

TYPED_TEST_P(ProcessesContract, OneThatIsGoneOrDeniesAccessHasNoPath) {
    this->m_rig.StartUnreadable(8);
    EXPECT_EQ(this->m_rig.Port().EnumProcesses(), Ids{8});
    EXPECT_EQ(this->m_rig.Port().ModuleFileName(8), std::nullopt);
    EXPECT_EQ(this->m_rig.Port().ModuleFileName(9), std::nullopt);
}

TYPED_TEST_P(ProcessesContract, IdsBeyondTheLimitAreNotSeen) {
    for (const std::uint32_t nId : {1U, 2U, 3U, 4U, 5U})
        this->m_rig.Start(nId, u"\\bin\\x");
    EXPECT_EQ(this->m_rig.Port().EnumProcesses(), (Ids{1, 2, 3, 4}));
}

TYPED_TEST_P(ProcessesContract, TheSnapshotHasFileNamesWithoutTheLimit) {
    for (const std::uint32_t nId : {1U, 2U, 3U, 4U})
        this->m_rig.Start(nId, u"\\bin\\x");
    this->m_rig.Start(5, u"C:\\tqx\\VEXON3.EXE");
    EXPECT_EQ(this->m_rig.Port().SnapshotNames(),
              (std::vector<Text>{u"x", u"x", u"x", u"x", u"VEXON3.EXE"}));
}

REGISTER_TYPED_TEST_SUITE_P(ProcessesContract, TheSystemIsOfTheNtFamily,
                            AMachineCanBeWithoutProcesses, EveryProcessHasItsIdAndPath,
                            OneThatIsGoneOrDeniesAccessHasNoPath, IdsBeyondTheLimitAreNotSeen,
                            TheSnapshotHasFileNamesWithoutTheLimit);

}  // namespace nomira::testing
