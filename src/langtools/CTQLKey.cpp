#include "langtools/CTQLKey.h"

#include <vector>

#include "langtools/BasicText.h"

namespace nomira {
namespace {

// The words of one class, in upper case; within a table each word stands once.
struct Row {
    std::int16_t nClass;
    std::vector<TextView> words;
};
using Rows = std::vector<Row>;

Rows Operators() {
    return {
        {1, {u"+", u"-", u"*", u"/"}},
        {2, {u"NOT", u"AND", u"OR", u"EXOR"}},
        {3, {u"==", u"<", u">", u"<=", u">=", u"<>"}},
        {4, {u"B_NOT", u"B_AND", u"B_OR", u"B_EXOR"}},
        {5, {u":"}},
    };
}

// DEVCONTOL, CHECFA and DATUEB are no slips: the controller spells them so.
Rows Keywords() {
    return {
        {1,
         {u"ADJUST",  u"AJOG",         u"AJOGOFF", u"ANALYSE", u"ASYPTP",   u"BREAK", u"CALIBRATE",
          u"CANCEL",  u"CLOSE",        u"COPY",    u"DATUEB",  u"DELETE",   u"DESCR", u"DEVCONTOL",
          u"DIR",     u"DOWNLOAD",     u"EDIT",    u"ENDEDIT", u"ENDINST",  u"ERASE", u"FIND",
          u"GET",     u"GOTO",         u"HALT",    u"INSERT",  u"INSTALL",  u"LINK",  u"MOVE",
          u"MOVEOFF", u"OPEN",         u"PRINT",   u"RENAME",  u"RESET",    u"RSYS",  u"RUN",
          u"SHOW",    u"SON",          u"SREAD",   u"START",   u"STARTOFF", u"STOP",  u"STOPOFF",
          u"STORE",   u"TTS_BACKWARD", u"UNLINK",  u"UPLOAD",  u"XCHANGE"}},
        {2, {u"C_DIS", u"C_VEL", u"C_ORI", u"C_PTP", u"FALSE", u"TRUE"}},
        {3, {u"ANIN",      u"ANOUT",  u"BRAKE",   u"CIRC",   u"CIRC_REL", u"CONFIRM", u"CONTINUE",
             u"DIGIN",     u"DRIFT",  u"END",     u"ENDFCT", u"EXIT",     u"FOR",     u"IF",
             u"INTERRUPT", u"LIN",    u"LIN_REL", u"LOOP",   u"PTP",      u"PTP_REL", u"PULSE",
             u"PUBLIC",    u"REPEAT", u"RESUME",  u"RETURN", u"SWITCH",   u"SYNACT",  u"TRIGGER",
             u"WAIT",      u"WHILE",  u"CWRITE"}},
        {4, {u"AND", u"B_AND", u"B_EXOR", u"B_NOT", u"B_OR", u"EXOR", u"NOT", u"OR"}},
        {5, {u"BOOL", u"CHAR", u"CHECFA", u"CHMOD", u"INT", u"REAL"}},
        {6, {u"AXIS", u"E3AXIS", u"E6AXIS", u"E3POS", u"E6POS", u"FRAME", u"POS"}},
        {7,
         {u"CA", u"CASE", u"DEFAULT", u"DELAY", u"DISTANCE", u"DO", u"ELSE", u"ENDFOR", u"ENDIF",
          u"ENDLOOP", u"ENDSWITCH", u"ENDWHILE", u"THEN", u"TO", u"UNTIL", u"WHEN", u"!"}},
        {8,
         {u"CHANGE_ATT", u"CREATE", u"EXTFCTP", u"EXTP", u"FORMAT", u"LIST", u"MESSAGE", u"PASSWD",
          u"READ", u"SAVE", u"SET", u"SHOW_ATT", u"WRITE"}},
        {9, {u"DEF", u"DEFDAT", u"DEFFCT"}},
        {10,
         {u"CHANNEL", u"DECL", u"ENDDAT", u"ENUM", u"EXT", u"EXTFCT", u"IMPORT", u"SIGNAL",
          u"STRUC"}},
    };
}

std::unordered_map<Text, std::int16_t> TableOf(const Rows& rows) {
    std::unordered_map<Text, std::int16_t> table;
    for (const Row& row : rows) {
        for (const TextView sWord : row.words)
            table.emplace(sWord, row.nClass);
    }
    return table;
}

}  // namespace

CTQLKey::CTQLKey() : m_colOperators(TableOf(Operators())), m_colKeywords(TableOf(Keywords())) {}

bool CTQLKey::IsTQLOperator(TextView sz, std::int16_t* nType) const {
    return Lookup(m_colOperators, sz, nType);
}

bool CTQLKey::IsTQLToken(TextView sz, std::int16_t* nType) const {
    return Lookup(m_colKeywords, sz, nType);
}

bool CTQLKey::Lookup(const Table& table, TextView sz, std::int16_t* nType) {
    const auto found = table.find(UCase(sz));
    if (found == table.end()) return false;
    if (nType) *nType = found->second;
    return true;
}

CTQLKey& g_Key() {
    static CTQLKey key;
    return key;
}

}  // namespace nomira
