#include "langtools/CTQLKey.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "testing/TextPrinting.h"

namespace nomira::testing {
namespace {

constexpr std::int16_t kUntouched = -77;

struct ClassOfWords {
    std::int16_t nClass;
    std::size_t nWords;
    TextView sWords;
};

std::vector<Text> Words(TextView sWords) {
    std::vector<Text> words;
    while (!sWords.empty()) {
        const std::size_t nEnd = std::min(sWords.find(u' '), sWords.size());
        words.emplace_back(sWords.substr(0, nEnd));
        sWords.remove_prefix(std::min(nEnd + 1, sWords.size()));
    }
    return words;
}

std::int16_t OperatorClass(TextView sWord) {
    std::int16_t nType = kUntouched;
    return CTQLKey().IsTQLOperator(sWord, &nType) ? nType : kUntouched;
}

std::int16_t KeywordClass(TextView sWord) {
    std::int16_t nType = kUntouched;
    return CTQLKey().IsTQLToken(sWord, &nType) ? nType : kUntouched;
}

TEST(CTQLKeyTest, KnowsTheOperatorsOfEachClass) {
    const ClassOfWords rows[] = {
        {1, 4, u"+ - * /"},
        {2, 4, u"NOT AND OR EXOR"},
        {3, 6, u"== < > <= >= <>"},
        {4, 4, u"B_NOT B_AND B_OR B_EXOR"},
        {5, 1, u":"},
    };
    for (const ClassOfWords& row : rows) {
        EXPECT_EQ(Words(row.sWords).size(), row.nWords);
        for (const Text& sWord : Words(row.sWords))
            EXPECT_EQ(OperatorClass(sWord), row.nClass) << Printable(sWord);
    }
}

TEST(CTQLKeyTest, KnowsTheKeywordsOfEachClass) {
    const ClassOfWords rows[] = {
        {1, 47,
         u"ADJUST AJOG AJOGOFF ANALYSE ASYPTP BREAK CALIBRATE CANCEL CLOSE COPY DATUEB DELETE "
         u"DESCR DEVCONTOL DIR DOWNLOAD EDIT ENDEDIT ENDINST ERASE FIND GET GOTO HALT INSERT "
         u"INSTALL LINK MOVE MOVEOFF OPEN PRINT RENAME RESET RSYS RUN SHOW SON SREAD START "
         u"STARTOFF STOP STOPOFF STORE TTS_BACKWARD UNLINK UPLOAD XCHANGE"},
        {2, 6, u"C_DIS C_VEL C_ORI C_PTP FALSE TRUE"},
        {3, 31,
         u"ANIN ANOUT BRAKE CIRC CIRC_REL CONFIRM CONTINUE DIGIN DRIFT END ENDFCT EXIT FOR IF "
         u"INTERRUPT LIN LIN_REL LOOP PTP PTP_REL PULSE PUBLIC REPEAT RESUME RETURN SWITCH "
         u"SYNACT TRIGGER WAIT WHILE CWRITE"},
        {4, 8, u"AND B_AND B_EXOR B_NOT B_OR EXOR NOT OR"},
        {5, 6, u"BOOL CHAR CHECFA CHMOD INT REAL"},
        {6, 7, u"AXIS E3AXIS E6AXIS E3POS E6POS FRAME POS"},
        {7, 17,
         u"CA CASE DEFAULT DELAY DISTANCE DO ELSE ENDFOR ENDIF ENDLOOP ENDSWITCH ENDWHILE THEN "
         u"TO UNTIL WHEN !"},
        {8, 13,
         u"CHANGE_ATT CREATE EXTFCTP EXTP FORMAT LIST MESSAGE PASSWD READ SAVE SET SHOW_ATT "
         u"WRITE"},
        {9, 3, u"DEF DEFDAT DEFFCT"},
        {10, 9, u"CHANNEL DECL ENDDAT ENUM EXT EXTFCT IMPORT SIGNAL STRUC"},
    };
    std::set<Text> all;
    for (const ClassOfWords& row : rows) {
        EXPECT_EQ(Words(row.sWords).size(), row.nWords);
        for (const Text& sWord : Words(row.sWords)) {
            EXPECT_EQ(KeywordClass(sWord), row.nClass) << Printable(sWord);
            all.insert(sWord);
        }
    }
    EXPECT_EQ(all.size(), 147u);
}

TEST(CTQLKeyTest, WordMayBeOperatorAndKeywordAtOnce) {
    EXPECT_EQ(OperatorClass(u"and"), 2);
    EXPECT_EQ(KeywordClass(u"and"), 4);
    EXPECT_EQ(OperatorClass(u"B_EXOR"), 4);
    EXPECT_EQ(KeywordClass(u"B_EXOR"), 4);
}

TEST(CTQLKeyTest, ColonIsAnOperatorAndExclamationMarkAKeyword) {
    EXPECT_EQ(OperatorClass(u":"), 5);
    EXPECT_EQ(KeywordClass(u":"), kUntouched);
    EXPECT_EQ(KeywordClass(u"!"), 7);
    EXPECT_EQ(OperatorClass(u"!"), kUntouched);
}

TEST(CTQLKeyTest, CaseDoesNotMatter) {
    for (const TextView sWord : {u"Decl", u"decl", u"DECL"})
        EXPECT_EQ(KeywordClass(sWord), 10);
    EXPECT_EQ(KeywordClass(u"C_DIS"), 2);
    EXPECT_EQ(KeywordClass(u"c_dis"), 2);
    EXPECT_EQ(KeywordClass(u"E6POS"), 6);
}

TEST(CTQLKeyTest, OnlyTheWholeWordCounts) {
    for (const TextView sText :
         {u"", u" DECL", u"DECL ", u"DEC", u"DECLX", u"DECL INT", u"DEVCONTROL", u"=", u"+-"}) {
        EXPECT_EQ(KeywordClass(sText), kUntouched) << Printable(sText);
        EXPECT_EQ(OperatorClass(sText), kUntouched) << Printable(sText);
    }
}

TEST(CTQLKeyTest, MissLeavesTheClassAlone) {
    std::int16_t nType = 42;
    EXPECT_FALSE(CTQLKey().IsTQLToken(u"", &nType));
    EXPECT_FALSE(CTQLKey().IsTQLOperator(u"", &nType));
    EXPECT_FALSE(CTQLKey().IsTQLToken(u"Motor", &nType));
    EXPECT_EQ(nType, 42);
}

TEST(CTQLKeyTest, ClassNeedNotBeAskedFor) {
    EXPECT_TRUE(g_Key().IsTQLToken(u"decl"));
    EXPECT_TRUE(g_Key().IsTQLOperator(u"<>"));
    EXPECT_FALSE(g_Key().IsTQLToken(u"<>"));
}

}  // namespace
}  // namespace nomira::testing
