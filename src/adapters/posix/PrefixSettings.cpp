#include "adapters/posix/PrefixSettings.h"

#include <algorithm>
#include <charconv>

#include "adapters/posix/CodePages.h"
#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"

namespace nomira::posix {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string_view Trimmed(std::string_view s) {
    const std::size_t nFirst = s.find_first_not_of(kBlanks);
    if (nFirst == std::string_view::npos) return {};
    return s.substr(nFirst, s.find_last_not_of(kBlanks) - nFirst + 1);
}

// Raised by the setters below: what is wrong, and the remedy. The caller adds the place.
struct BadSetting {
    std::string sWhat;
};

void SetCodePage(PrefixSettings& settings, std::string_view, std::string_view sValue) {
    int nPage = 0;
    const auto [end, error] = std::from_chars(sValue.data(), sValue.data() + sValue.size(), nPage);
    const bool bNumber = error == std::errc() && end == sValue.data() + sValue.size();
    if (!bNumber || nPage <= 0 || !MakeCodePage(nPage)) {
        throw BadSetting{"\"" + std::string(sValue) +
                         "\" is no code page of this system; write its number, such as "
                         "\"codepage = 1252\""};
    }
    settings.nCodePage = nPage;
}

void SetRefreshHook(PrefixSettings& settings, std::string_view, std::string_view sValue) {
    settings.sRefreshHook = sValue;
}

bool IsDrivePath(TextView sPath) {
    return sPath.size() > 3 && UCase(sPath[0]) >= u'A' && UCase(sPath[0]) <= u'Z' &&
           sPath[1] == u':' && (sPath[2] == u'\\' || sPath[2] == u'/');
}

void AddPlacedPath(PrefixSettings& settings, std::string_view sOf, std::string_view sValue) {
    const Text sPath = FromNative(sOf);
    if (!IsDrivePath(sPath) || !sValue.starts_with('/')) {
        throw BadSetting{
            "a path needs a drive on its left and an absolute path of this system on "
            "its right; write it such as \"path C:\\tqx\\data\\orvo_con.mdb = "
            "/srv/orvo_con.db\""};
    }
    settings.placedPaths.push_back({sPath, std::string(sValue)});
}

struct SettingKind {
    std::string_view sName;
    bool bHasOperand;  // something stands between the name and "="
    void (*set)(PrefixSettings&, std::string_view sOperand, std::string_view sValue);
};
constexpr SettingKind kKinds[] = {
    {"codepage", false, SetCodePage},
    {"refresh-hook", false, SetRefreshHook},
    {"path", true, AddPlacedPath},
};

void ParseSetting(PrefixSettings& settings, std::string_view sLine) {
    const std::size_t nEquals = sLine.find('=');
    if (nEquals == std::string_view::npos) {
        throw BadSetting{"no \"=\"; write \"name = value\", or \"#\" before a comment"};
    }
    const std::string_view sLeft = Trimmed(sLine.substr(0, nEquals));
    const std::string_view sName = sLeft.substr(0, sLeft.find_first_of(kBlanks));
    const std::string_view sOperand = Trimmed(sLeft.substr(sName.size()));
    for (const SettingKind& kind : kKinds) {
        if (kind.sName != sName || kind.bHasOperand == sOperand.empty()) continue;
        return kind.set(settings, sOperand, Trimmed(sLine.substr(nEquals + 1)));
    }
    throw BadSetting{"\"" + std::string(sLeft) +
                     "\" is no setting; the settings are codepage, refresh-hook, and path with the "
                     "path that it places"};
}

}  // namespace

PrefixSettings ParsePrefixSettings(std::string_view bytes, const std::string& sFile) {
    if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    PrefixSettings settings;
    for (int nLine = 1; !bytes.empty(); ++nLine) {
        const std::size_t nEnd = std::min(bytes.find('\n'), bytes.size());
        const std::string_view sLine = Trimmed(bytes.substr(0, nEnd));
        bytes.remove_prefix(std::min(nEnd + 1, bytes.size()));
        if (sLine.empty() || sLine.starts_with('#')) continue;
        try {
            ParseSetting(settings, sLine);
        } catch (const BadSetting& bad) {
            throw PrefixError(sFile + ":" + std::to_string(nLine) + ": " + bad.sWhat);
        }
    }
    return settings;
}

}  // namespace nomira::posix
