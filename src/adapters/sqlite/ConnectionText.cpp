#include "adapters/sqlite/ConnectionText.h"

#include <algorithm>

#include "langtools/BasicText.h"

namespace nomira::sqlite {
namespace {

bool NamesFile(TextView sKey) {
    return EqualNoCase(sKey, u"DBQ") || EqualNoCase(sKey, u"Data Source");
}

}  // namespace

TextView DatabasePath(TextView sConnectionText) {
    while (!sConnectionText.empty()) {
        const TextView sPair = sConnectionText.substr(0, sConnectionText.find(u';'));
        const std::size_t nEquals = sPair.find(u'=');
        if (nEquals != TextView::npos && NamesFile(Trim(sPair.substr(0, nEquals))))
            return Trim(sPair.substr(nEquals + 1));
        sConnectionText.remove_prefix(std::min(sPair.size() + 1, sConnectionText.size()));
    }
    return {};
}

}  // namespace nomira::sqlite
