#include "conversion/KeyScheme.h"

#include <gtest/gtest.h>

#include <string>

#include "adapters/memory/MemoryMachine.h"
#include "frame/ProgramVariables.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

struct ClassRow {
    TextView sPrefix, sCustomerPrefix, sModule;
    std::int16_t* pSize;
    std::int16_t nDefaultSize;
    int nMaxDigits;
    bool bWelding;
};

// In the program's fixed order.
const ClassRow kClasses[] = {
    {u"IN_", u"E", u"IO", &g_nNumIo, 1024, 4, false},
    {u"OUT_", u"A", u"IO", &g_nNumIo, 1024, 4, false},
    {u"NoticeText", u"M", u"Notice", &g_nNumNotice, 32, 3, false},
    {u"CounterText", u"I", u"Counter", &g_nNumCounter, 32, 2, false},
    {u"FlagText", u"F", u"Flag", &g_nNumFlag, 1024, 4, false},
    {u"TimerText", u"T", u"Timer", &g_nNumTimer, 32, 2, false},
    {u"ANIN_", u"ANAE", u"IO", &g_nNumAnIn, 32, 2, false},
    {u"ANOUT_", u"ANAA", u"IO", &g_nNumAnOut, 32, 2, false},
    {u"BININ_", u"BINE", u"IO", &g_nNumBinIn, 20, 2, false},
    {u"BINOUT_", u"BINA", u"IO", &g_nNumBinOut, 20, 2, false},
    {u"ZTQXProcParam_", u"P", u"ZTQXProcParam", &g_nNumProcParam, 256, 3, false},
    {u"Start1", u"Start1", u"A10TP", nullptr, 8, 1, true},
    {u"Weld1", u"Weld1", u"A10TP", nullptr, 8, 1, true},
    {u"CraterChannel1", u"CraterChannel1", u"A10TP", nullptr, 8, 1, true},
};

TEST(KeySchemeTest, ClassesStandInTheirOrder) {
    ASSERT_EQ(SignalClasses().size(), std::size(kClasses));
    for (std::size_t n = 0; n < std::size(kClasses); ++n) {
        SCOPED_TRACE(n + 1);
        const SignalClass& signalClass = SignalClasses()[n];
        const ClassRow& row = kClasses[n];
        EXPECT_EQ(signalClass.sPrefix, row.sPrefix);
        EXPECT_EQ(signalClass.sCustomerPrefix, row.sCustomerPrefix);
        EXPECT_EQ(signalClass.sModule, row.sModule);
        EXPECT_EQ(signalClass.pSize, row.pSize);
        EXPECT_EQ(signalClass.nDefaultSize, row.nDefaultSize);
        EXPECT_EQ(signalClass.nMaxDigits, row.nMaxDigits);
        EXPECT_EQ(signalClass.bWelding, row.bWelding);
        EXPECT_EQ(signalClass.bWelding, n >= kPlainClassCount);
    }
}

TEST(KeySchemeTest, SizeIsThatOfTheClassesVariable) {
    const memory::MemoryMachine machine;
    g_nNumTimer = 77;
    EXPECT_EQ(SignalClasses()[0].Size(), 1024);
    EXPECT_EQ(SignalClasses()[2].Size(), 0);
    EXPECT_EQ(SignalClasses()[5].Size(), 77);
    for (std::size_t n = kPlainClassCount; n < kSignalClassCount; ++n)
        EXPECT_EQ(SignalClasses()[n].Size(), 8);
}

TEST(KeySchemeTest, KeyBelongsToTheClassOfItsPrefix) {
    for (const SignalClass& signalClass : SignalClasses()) {
        for (const TextView sNumber : {u"0", u"7", u"12", u"123", u"9999", u"007"})
            EXPECT_EQ(ClassOfKey(Text(signalClass.sPrefix) + Text(sNumber)), &signalClass);
    }
}

TEST(KeySchemeTest, WhatIsNotPrefixAndDigitsIsNoKey) {
    for (const TextView sText :
         {u"", u"IN_", u"IN_12345", u"IN_1x", u"IN_ 1", u" IN_1", u"IN_1 ", u"in_1", u"IN1", u"E17",
          u"17", u"Start1", u"Weld", u"XIN_1", u"IN_-1", u"IN_\u0661"}) {
        EXPECT_EQ(ClassOfKey(sText), nullptr) << Printable(sText);
    }
}

// The prefixes as a caller gets them, in the order of the arguments.
struct Prefixes {
    Text sIn, sOut, sAnIn, sAnOut, sBinIn, sBinOut, sNotice, sCounter, sFlag, sTimer;
    Text sProcParam = u"(untouched)";
    bool bCustomer = false;

    void Get() {
        GetKeyPrefixes(sIn, sOut, sAnIn, sAnOut, sBinIn, sBinOut, sNotice, sCounter, sFlag, sTimer,
                       sProcParam, &bCustomer);
    }
    std::vector<Text> List() const {
        return {sIn, sOut, sAnIn, sAnOut, sBinIn, sBinOut, sNotice, sCounter, sFlag, sTimer};
    }
};

void SetCustomer(memory::MemoryMachine& machine, TextView sCustomer) {
    machine.registry.SetString(RegistryRoot::LocalMachine, u"Software\\Orvo\\Version", u"Customer",
                               sCustomer);
}

void ExpectStandard(const Prefixes& prefixes) {
    EXPECT_EQ(prefixes.List(),
              (std::vector<Text>{u"IN_", u"OUT_", u"ANIN_", u"ANOUT_", u"BININ_", u"BINOUT_",
                                 u"NoticeText", u"CounterText", u"FlagText", u"TimerText"}));
    EXPECT_FALSE(prefixes.bCustomer);
}

TEST(KeySchemeTest, CustomerInstallationHasItsOwnPrefixes) {
    memory::MemoryMachine machine;
    SetCustomer(machine, u"VW");
    Prefixes prefixes;
    prefixes.Get();
    EXPECT_EQ(prefixes.List(), (std::vector<Text>{u"E", u"A", u"ANAE", u"ANAA", u"BINE", u"BINA",
                                                  u"M", u"I", u"F", u"T"}));
    EXPECT_EQ(prefixes.sProcParam, u"P");
    EXPECT_TRUE(prefixes.bCustomer);
}

TEST(KeySchemeTest, StandardInstallationLeavesTheProcessParametersPrefixAlone) {
    const memory::MemoryMachine machine;
    Prefixes prefixes;
    prefixes.bCustomer = true;
    prefixes.Get();
    ExpectStandard(prefixes);
    EXPECT_EQ(prefixes.sProcParam, u"(untouched)");
}

TEST(KeySchemeTest, CustomerInAnotherCaseIsNoCustomer) {
    for (const TextView sCustomer : {u"vw", u"Vw", u" VW", u"VW ", u"VWX", u""}) {
        memory::MemoryMachine machine;
        SetCustomer(machine, sCustomer);
        Prefixes prefixes;
        prefixes.Get();
        SCOPED_TRACE(Printable(sCustomer));
        ExpectStandard(prefixes);
        EXPECT_EQ(prefixes.sProcParam, u"(untouched)");
    }
}

TEST(KeySchemeTest, CallerNeedNotAskForTheKindOfInstallation) {
    const memory::MemoryMachine machine;
    Text sIn;
    Text s;
    GetKeyPrefixes(sIn, s, s, s, s, s, s, s, s, s, s);
    EXPECT_EQ(sIn, u"IN_");
}

struct SwapRow {
    TextView sLine, sOld, sNew, sResult;
};

TEST(KeySchemeTest, SwapsThePrefixAheadOfADigit) {
    const SwapRow rows[] = {
        {u"IN_12 Pumpe", u"IN_", u"E", u"E12 Pumpe"},
        {u"A17", u"A", u"OUT_", u"OUT_17"},
        {u"M007 x", u"M", u"NoticeText", u"NoticeText007 x"},
        {u"IN_12  Pumpe  links  ", u"IN_", u"E", u"E12  Pumpe  links"},
        {u"17", u"", u"P", u"P17"},
        {u"E1", u"E", u"", u"1"},
    };
    for (const SwapRow& row : rows)
        EXPECT_EQ(SwapKeyPrefix(row.sLine, row.sOld, row.sNew), row.sResult);
}

TEST(KeySchemeTest, RowWithoutADigitBehindThePrefixStaysAsItIs) {
    const SwapRow rows[] = {
        {u"ANAA1", u"A", u"OUT_", u"ANAA1"},  {u"IN_x Pumpe ", u"IN_", u"E", u"IN_x Pumpe "},
        {u"IN_", u"IN_", u"E", u"IN_"},       {u" IN_12 x ", u"IN_", u"E", u" IN_12 x "},
        {u"in_12", u"IN_", u"E", u"in_12"},   {u"", u"IN_", u"E", u""},
        {u"IN_ 12", u"IN_", u"E", u"IN_ 12"},
    };
    for (const SwapRow& row : rows)
        EXPECT_EQ(SwapKeyPrefix(row.sLine, row.sOld, row.sNew), row.sResult);
}

}  // namespace
}  // namespace nomira::testing
