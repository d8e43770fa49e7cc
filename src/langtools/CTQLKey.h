// CTQLKey knows the words of the robot language: its operators and keywords, each with a small
// class number. Lookups fold case and need the whole word; blanks around it make it a miss.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "langtools/Text.h"

namespace nomira {

class CTQLKey {
  public:
    CTQLKey();

    // Whether `sz` is an operator. If it is and `nType` is given, *nType becomes its class
    // (1 arithmetic, 2 logic, 3 comparison, 4 bitwise, 5 the colon); else *nType stays.
    bool IsTQLOperator(TextView sz, std::int16_t* nType = nullptr) const;

    // Whether `sz` is a keyword; *nType as above, with the keyword classes 1 to 10.
    bool IsTQLToken(TextView sz, std::int16_t* nType = nullptr) const;

  private:
    using Table = std::unordered_map<Text, std::int16_t>;
    static bool Lookup(const Table& table, TextView sz, std::int16_t* nType);

    Table m_colOperators;
    Table m_colKeywords;
};

// The one instance, made when first used; only CTools reaches it.
CTQLKey& g_Key();

}  // namespace nomira
