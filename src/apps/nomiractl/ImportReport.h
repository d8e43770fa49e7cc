// What an import did, line by line and class by class, for people and as JSON.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "apps/nomiractl/LongTexts.h"
#include "conversion/PassObserver.h"
#include "database/adoModul.h"

namespace nomira::companion {

struct ImportReport {
    struct PassedLine {
        std::int64_t nLine;
        Text sLine;
        PassedOver reason;
    };
    struct FailedLine {
        std::int64_t nLine;
        Text sKey;
        StoreOutcome outcome;
    };

    std::string sFile;      // as the user wrote it
    std::string sDatabase;  // its path
    bool bCustomer = false;
    bool bOverwrite = false;
    bool bDryRun = false;

    ByClass<int> lines{};                                      // stored, by class
    ByClass<ClassChanges> changes{};                           // of the database
    std::map<std::pair<Text, Text>, std::int64_t> storedAt{};  // the last line by module and key
    std::vector<PassedLine> passedOver{};
    std::vector<FailedLine> failed{};
};

// The reason as a stable word, and for people.
const char* ReasonCode(PassedOver reason);
const char* ReasonInWords(PassedOver reason);
// Why a line could not be stored.
std::string FailureReason(const ImportReport& report, StoreOutcome outcome);

// The lines that could not be stored, as "nomiractl: FILE:LINE: KEY: why"; nothing if there are
// none.
void PrintFailures(const ImportReport& report, std::ostream& err);
void PrintReport(const ImportReport& report, std::ostream& out);
nlohmann::ordered_json ReportAsJson(const ImportReport& report);

}  // namespace nomira::companion
