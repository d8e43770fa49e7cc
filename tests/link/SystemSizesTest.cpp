#include "link/SystemSizes.h"

#include "frame/ProgramVariables.h"
#include "langtools/CParser.h"
#include "link/LinkFixture.h"

namespace nomira::testing {
namespace {

class SystemSizesTest : public LinkFixture {
  protected:
    static std::vector<int> Sizes() {
        return {g_nNumIo,    g_nNumNotice, g_nNumTimer,  g_nNumCounter, g_nNumFlag,
                g_nNumAnOut, g_nNumAnIn,   g_nNumBinOut, g_nNumBinIn,   g_nNumProcParam};
    }
    void AnswerWithTokens(int nTokens) {
        Text sValue;
        for (int n = 0; n < nTokens; ++n)
            sValue += n == 0 ? u"p" : u" p";
        m_library.SetVariable(u"PROCPAR[]", sValue);
    }
};

TEST_F(SystemSizesTest, AreReadInTheirOrder) {
    Linked();
    ReadSystemSizes();
    Texts asked;
    for (const Text& sCall : Calls())
        if (sCall.starts_with(u"ReadVar")) asked.push_back(sCall);
    EXPECT_EQ(asked, (Texts{u"ReadVar($NUM_OUT)", u"ReadVar(GETVARSIZE(#CYCFLAG))",
                            u"ReadVar(GETVARSIZE(#TIMER))", u"ReadVar(GETVARSIZE(#COUNT_I))",
                            u"ReadVar(GETVARSIZE(#FLAG))", u"ReadVar(GETVARSIZE(#AN_OUT))",
                            u"ReadVar(GETVARSIZE(#AN_IN))", u"ReadVar(GETVARSIZE(#BIN_OUT))",
                            u"ReadVar(GETVARSIZE(#BIN_IN))", u"ReadVar(PROCPAR[])"}));
}

TEST_F(SystemSizesTest, EachAnswerGoesIntoItsVariable) {
    const TextView names[] = {u"$NUM_OUT",           u"GETVARSIZE(#CYCFLAG)",
                              u"GETVARSIZE(#TIMER)", u"GETVARSIZE(#COUNT_I)",
                              u"GETVARSIZE(#FLAG)",  u"GETVARSIZE(#AN_OUT)",
                              u"GETVARSIZE(#AN_IN)", u"GETVARSIZE(#BIN_OUT)",
                              u"GETVARSIZE(#BIN_IN)"};
    for (std::size_t n = 0; n < std::size(names); ++n)
        m_library.SetVariable(names[n], DecimalText(static_cast<int>(n) + 11));
    AnswerWithTokens(300);
    Linked();
    ReadSystemSizes();
    EXPECT_EQ(Sizes(), (std::vector<int>{11, 12, 13, 14, 15, 16, 17, 18, 19, 300}));
}

TEST_F(SystemSizesTest, TellsWhereEachSizeCameFrom) {
    m_library.SetVariable(u"$NUM_OUT", u"4096");
    AnswerWithTokens(256);
    Linked();
    const std::vector<SystemSize> sizes = ReadSystemSizes();
    ASSERT_EQ(sizes.size(), 10U);
    EXPECT_EQ(sizes[0].sVariable, u"$NUM_OUT");
    EXPECT_EQ(sizes[0].nSize, 4096);
    EXPECT_TRUE(sizes[0].source == SizeSource::Told);
    EXPECT_EQ(sizes[7].sVariable, u"GETVARSIZE(#BIN_OUT)");
    EXPECT_EQ(sizes[7].nSize, 20);
    EXPECT_TRUE(sizes[7].source == SizeSource::Usual);
    EXPECT_EQ(sizes[9].sVariable, u"PROCPAR[]");
    EXPECT_TRUE(sizes[9].source == SizeSource::Usual) << "256 names are not believed";
    AnswerWithTokens(300);
    EXPECT_TRUE(ReadSystemSizes()[9].source == SizeSource::Told);
    m_library.Fail(u"ReadVar(PROCPAR[]");
    EXPECT_TRUE(ReadSystemSizes()[9].source == SizeSource::Untouched);
    EXPECT_EQ(ReadSystemSizes()[9].nSize, 300);
}

TEST_F(SystemSizesTest, WithoutTheMiddlewareTheUsualSizesTakeOver) {
    Unlinked();
    for (std::int16_t* pSize : {&g_nNumIo, &g_nNumNotice, &g_nNumTimer, &g_nNumCounter, &g_nNumFlag,
                                &g_nNumAnOut, &g_nNumAnIn, &g_nNumBinOut, &g_nNumBinIn})
        *pSize = 7;
    g_nNumProcParam = 77;
    ReadSystemSizes();
    EXPECT_EQ(Sizes(), (std::vector<int>{1024, 32, 32, 32, 1024, 32, 32, 20, 20, 77}));
}

TEST_F(SystemSizesTest, SizeTakesFourDigits) {
    Linked();
    for (const auto& [sAnswer, nSize] : {std::pair<TextView, int>{u"4096", 4096},
                                         {u"40960", 4096},
                                         {u"about 12 of them", 12},
                                         {u"none", 0},
                                         {u"", 0}}) {
        m_library.SetVariable(u"$NUM_OUT", sAnswer);
        ReadSystemSizes();
        EXPECT_EQ(g_nNumIo, nSize) << Printable(sAnswer);
    }
}

TEST_F(SystemSizesTest, CountOfProcessParametersIsBelievedFrom257To998) {
    Linked();
    for (const auto& [nTokens, nSize] : {std::pair{300, 300},
                                         {0, 256},
                                         {1, 256},
                                         {256, 256},
                                         {257, 257},
                                         {998, 998},
                                         {999, 256},
                                         {2000, 256}}) {
        AnswerWithTokens(nTokens);
        ReadSystemSizes();
        EXPECT_EQ(g_nNumProcParam, nSize) << nTokens;
    }
}

TEST_F(SystemSizesTest, MoreProcessParametersThanCanBeCountedOverflow) {
    Linked();
    g_nNumProcParam = 77;
    AnswerWithTokens(32768);
    EXPECT_EQ(Raised([] { ReadSystemSizes(); }), ErrorNumber::Overflow);
    EXPECT_EQ(g_nNumProcParam, 77);
}

TEST_F(SystemSizesTest, WithoutAnInnerObjectTheReadFails) {
    EXPECT_EQ(Raised([] { ReadSystemSizes(); }), ErrorNumber::ObjectNotSet);
}

}  // namespace
}  // namespace nomira::testing
