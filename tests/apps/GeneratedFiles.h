// Text files and programs as they come, and as nobody would write them, for tests that compare two
// ways over the same bytes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "testing/Random.h"

namespace nomira::testing {

using Strings = std::vector<std::string>;

class Generator {
  public:
    std::string Seed() const { return m_random.Seed(); }
    bool OneIn(std::size_t n) { return m_random.UpTo(n - 1) == 0; }
    std::size_t UpTo(std::size_t n) { return m_random.UpTo(n); }
    const std::string& OneOf(const Strings& all) { return all[m_random.UpTo(all.size() - 1)]; }
    std::string Number(std::size_t nMost) { return std::to_string(m_random.UpTo(nMost)); }

  private:
    Random m_random;
};

// ---- Text files ----

inline const Strings kPrefixes{"IN_",
                               "OUT_",
                               "ANIN_",
                               "ANOUT_",
                               "BININ_",
                               "BINOUT_",
                               "NoticeText",
                               "CounterText",
                               "FlagText",
                               "TimerText",
                               "ZTQXProcParam_",
                               "",
                               "Start1",
                               "Weld1",
                               "CraterChannel1",
                               "E",
                               "A",
                               "ANAE",
                               "ANAA",
                               "BINE",
                               "BINA",
                               "M",
                               "I",
                               "F",
                               "T",
                               "P",
                               "in_",
                               "Timertext",
                               "e"};
inline const Strings kNumbers{"",   "0",   "1",   "2",    "3",     "7",
                              "12", "007", "123", "1234", "12345", "5x"};
inline const Strings kBlanks{" ", "  ", "\t", " \t ", ""};
inline const Strings kTexts{"Pumpe",
                            "Zange auf",
                            "F\xFCllstand gro\xDF",
                            "\xDC"
                            "BER",
                            "a\tb",
                            "it's",
                            "x [ y",
                            "what?",
                            "no. #",
                            "Ready State 1",
                            "|EMPTY|",
                            "\xB5-step",
                            "IN_1",
                            "IN_2",
                            "",
                            "",
                            "\x01",
                            "F\xC3\xBCll",
                            "a\nIN_3 b",
                            "two  blanks ",
                            "\x80\x81"};
inline const Strings kRemarks{
    "",       " ",       "\t",         "# remark",     "; IN_5 x",           "17",
    "pump 3", "INN_5 x", "IN_12Pumpe", "FlagText5Tor", "\xEF\xBB\xBFIN_1 x", "IN_5=x"};
inline const Strings kLineEnds{"\r\n", "\r\n", "\r\n", "\r\n", "\r\n", "\r", "\r\r\n"};

inline std::string TextLine(Generator& any) {
    if (any.OneIn(5)) return any.OneOf(kRemarks);
    std::string sLine = any.OneIn(8) ? any.OneOf(kBlanks) : "";
    sLine += any.OneOf(kPrefixes) + any.OneOf(kNumbers);
    sLine += any.OneIn(4) ? any.OneOf(kBlanks) : " ";
    return sLine + any.OneOf(kTexts);
}

inline std::string TextFile(Generator& any) {
    std::string bytes;
    const bool bLfOnly = any.OneIn(20);
    const std::size_t nLines = any.UpTo(30);
    for (std::size_t n = 0; n < nLines; ++n)
        bytes += TextLine(any) + (bLfOnly ? "\n" : any.OneOf(kLineEnds));
    if (any.OneIn(30)) bytes += "IN_99 " + std::string(32'762, 'x') + "\r\nIN_98 never\r\n";
    if (any.OneIn(30)) {
        for (int n = 0; n < 32'768; ++n)
            bytes += "w ";
        bytes += "\r\nIN_97 x\r\n";
    }
    if (any.OneIn(3)) bytes += TextLine(any);
    return bytes;
}

// ---- Programs ----

inline const Strings kNames{
    "Pumpe", "Pump",          "old",        "",        "a*b",     "wh?t",       "x [ y", "in [1-9]",
    "it's",  "Ready State 1", "at point 3", "F\xFCll", "|EMPTY|", "main out 3", "OUT_4", "'"};
inline const Strings kSignals{"1", "2",  "3",   "4",  "5", "6",   "7", "8",
                              "9", " 3", "  4", "77", "",  "1E3", "x"};
inline const Strings kStates{" State=TRUE;%{PE}%P 2:1", " State", " state=FALSE",
                             " AT POINT State=TRUE",    "",       " at point State"};

inline std::string Condition(Generator& any) {
    const std::string sName = any.OneOf(kNames);
    return any.OneOf({"IN", "OUT", "CYCFLAG", "TIMER", "FLAG", "in", "MAIN"}) + " " +
           any.OneOf(kSignals) + " '" + sName + (any.OneIn(4) ? "')" : "' )");
}

inline std::string ProgramLine(Generator& any) {
    const std::string sIndent = any.OneIn(5) ? any.OneOf({"  ", "\t", " \t"}) : "";
    const std::string sName = "'" + any.OneOf(kNames) + "'";
    switch (any.UpTo(6)) {
        case 0:
            return any.OneOf({"$OUT[1]=TRUE", "", "DEF a()", ";FOLD my own", "; IN 5", ";ENDFOLD"});
        case 1:
            return sIndent + ";FOLD WAIT FOR ( " + Condition(any) + " AND ( " + Condition(any) +
                   " OR ( " + Condition(any) + " ;%{PE}%P IN 3 'hidden' ";
        case 2:
            return sIndent + ";FOLD ANOUT " + any.OneOf({"ON ", "OFF ", "", "on "}) +
                   any.OneOf({"Speed", "A", "Pumpe", "", "O[N"}) + any.OneOf({" = 0.5", ""}) +
                   ";%{PE}" + any.OneOf({"%VANOUT_DYN%P:CHANNEL_", "%VANOUT_STAT%P:CHANNEL_"}) +
                   any.OneOf({"1,", "2,4:0.5", "3", ",", "x,"});
        case 3:
            return sIndent + any.OneOf({";FOLD OUT ", ";FOLD WAIT FOR IN ", ";FOLD PULSE "}) +
                   any.OneOf(kSignals) + ": symName" + any.OneOf({" State=TRUE", " State", ""});
        default:
            return sIndent +
                   any.OneOf({";FOLD OUT ", ";FOLD PULSE ", ";FOLD SYN OUT ", ";FOLD SYN PULSE ",
                              ";FOLD WAIT FOR IN ", ";FOLD WAIT FOR OUT ", ";fold out ",
                              ";FOLD OUTLET "}) +
                   any.OneOf(kSignals) + " " + sName +
                   (any.OneIn(6) ? any.OneOf(kStates) : kStates[0]);
    }
}

inline std::string Program(Generator& any) {
    std::string bytes;
    const bool bLfOnly = any.OneIn(20);
    const std::size_t nLines = any.UpTo(8);
    for (std::size_t n = 0; n < nLines; ++n)
        bytes += ProgramLine(any) + (bLfOnly ? "\n" : any.OneIn(6) ? "\r" : "\r\n");
    if (any.OneIn(2)) bytes += ProgramLine(any);
    if (any.OneIn(40)) {
        for (int n = 0; n < 32'770; ++n)
            bytes += "\r\n";
    }
    return bytes;
}

}  // namespace nomira::testing
