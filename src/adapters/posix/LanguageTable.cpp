#include "adapters/posix/LanguageTable.h"

namespace nomira::posix {
namespace {

// The ids are the published Windows language ids.
constexpr Language kLanguages[] = {
    {"en_US", 0x0409, 1252}, {"en_GB", 0x0809, 1252}, {"en_AU", 0x0C09, 1252},
    {"en_CA", 0x1009, 1252}, {"en_NZ", 0x1409, 1252}, {"en_IE", 0x1809, 1252},
    {"en_ZA", 0x1C09, 1252}, {"en_JM", 0x2009, 1252}, {"en_BZ", 0x2809, 1252},
    {"en_TT", 0x2C09, 1252}, {"en_ZW", 0x3009, 1252}, {"en_PH", 0x3409, 1252},
    {"en_IN", 0x4009, 1252}, {"en_SG", 0x4809, 1252}, {"de_DE", 0x0407, 1252},
    {"de_CH", 0x0807, 1252}, {"de_AT", 0x0C07, 1252}, {"de_LU", 0x1007, 1252},
    {"de_LI", 0x1407, 1252}, {"fr_FR", 0x040C, 1252}, {"fr_BE", 0x080C, 1252},
    {"fr_CA", 0x0C0C, 1252}, {"fr_CH", 0x100C, 1252}, {"fr_LU", 0x140C, 1252},
    {"fr_MC", 0x180C, 1252}, {"es_ES", 0x0C0A, 1252}, {"es_MX", 0x080A, 1252},
    {"es_GT", 0x100A, 1252}, {"es_CR", 0x140A, 1252}, {"es_PA", 0x180A, 1252},
    {"es_DO", 0x1C0A, 1252}, {"es_VE", 0x200A, 1252}, {"es_CO", 0x240A, 1252},
    {"es_PE", 0x280A, 1252}, {"es_AR", 0x2C0A, 1252}, {"es_EC", 0x300A, 1252},
    {"es_CL", 0x340A, 1252}, {"es_UY", 0x380A, 1252}, {"es_PY", 0x3C0A, 1252},
    {"es_BO", 0x400A, 1252}, {"es_SV", 0x440A, 1252}, {"es_HN", 0x480A, 1252},
    {"es_NI", 0x4C0A, 1252}, {"es_PR", 0x500A, 1252}, {"it_IT", 0x0410, 1252},
    {"it_CH", 0x0810, 1252}, {"nl_NL", 0x0413, 1252}, {"nl_BE", 0x0813, 1252},
    {"pt_BR", 0x0416, 1252}, {"pt_PT", 0x0816, 1252}, {"sv_SE", 0x041D, 1252},
    {"sv_FI", 0x081D, 1252}, {"da_DK", 0x0406, 1252}, {"nb_NO", 0x0414, 1252},
    {"no_NO", 0x0414, 1252}, {"nn_NO", 0x0814, 1252}, {"fi_FI", 0x040B, 1252},
    {"is_IS", 0x040F, 1252}, {"ca_ES", 0x0403, 1252}, {"eu_ES", 0x042D, 1252},
    {"gl_ES", 0x0456, 1252}, {"af_ZA", 0x0436, 1252}, {"fo_FO", 0x0438, 1252},
    {"id_ID", 0x0421, 1252}, {"ms_MY", 0x043E, 1252}, {"ms_BN", 0x083E, 1252},
    {"sw_KE", 0x0441, 1252}, {"cs_CZ", 0x0405, 1250}, {"hu_HU", 0x040E, 1250},
    {"pl_PL", 0x0415, 1250}, {"ro_RO", 0x0418, 1250}, {"hr_HR", 0x041A, 1250},
    {"sk_SK", 0x041B, 1250}, {"sl_SI", 0x0424, 1250}, {"sq_AL", 0x041C, 1250},
    {"bg_BG", 0x0402, 1251}, {"ru_RU", 0x0419, 1251}, {"uk_UA", 0x0422, 1251},
    {"be_BY", 0x0423, 1251}, {"mk_MK", 0x042F, 1251}, {"kk_KZ", 0x043F, 1251},
    {"ky_KG", 0x0440, 1251}, {"tt_RU", 0x0444, 1251}, {"mn_MN", 0x0450, 1251},
    {"el_GR", 0x0408, 1253}, {"tr_TR", 0x041F, 1254}, {"he_IL", 0x040D, 1255},
    {"iw_IL", 0x040D, 1255}, {"ar_SA", 0x0401, 1256}, {"ar_IQ", 0x0801, 1256},
    {"ar_EG", 0x0C01, 1256}, {"ar_LY", 0x1001, 1256}, {"ar_DZ", 0x1401, 1256},
    {"ar_MA", 0x1801, 1256}, {"ar_TN", 0x1C01, 1256}, {"ar_OM", 0x2001, 1256},
    {"ar_YE", 0x2401, 1256}, {"ar_SY", 0x2801, 1256}, {"ar_JO", 0x2C01, 1256},
    {"ar_LB", 0x3001, 1256}, {"ar_KW", 0x3401, 1256}, {"ar_AE", 0x3801, 1256},
    {"ar_BH", 0x3C01, 1256}, {"ar_QA", 0x4001, 1256}, {"fa_IR", 0x0429, 1256},
    {"ur_PK", 0x0420, 1256}, {"et_EE", 0x0425, 1257}, {"lv_LV", 0x0426, 1257},
    {"lt_LT", 0x0427, 1257}, {"vi_VN", 0x042A, 1258}, {"th_TH", 0x041E, 874},
    {"ja_JP", 0x0411, 932},  {"zh_CN", 0x0804, 936},  {"zh_SG", 0x1004, 936},
    {"zh_TW", 0x0404, 950},  {"zh_HK", 0x0C04, 950},  {"zh_MO", 0x1404, 950},
    {"ko_KR", 0x0412, 949},  {"hi_IN", 0x0439, 0},    {"ta_IN", 0x0449, 0},
    {"te_IN", 0x044A, 0},    {"mr_IN", 0x044E, 0},    {"hy_AM", 0x042B, 0},
    {"ka_GE", 0x0437, 0},
};

constexpr std::uint16_t kPrimaryMask = 0x03FF;

// "de" of "de_AT".
std::string_view LanguageAlone(std::string_view sName) {
    return sName.substr(0, sName.find('_'));
}

}  // namespace

std::span<const Language> Languages() {
    return kLanguages;
}

const Language* FindLanguage(std::string_view sName) {
    sName = sName.substr(0, sName.find_first_of(".@"));  // no character set, no variant
    const Language* alone = nullptr;
    for (const Language& language : kLanguages) {
        if (language.sName == sName) return &language;
        if (!alone && LanguageAlone(language.sName) == LanguageAlone(sName)) alone = &language;
    }
    return alone;
}

const Language* FindLanguage(std::uint16_t nId) {
    const bool bPrimaryAlone = nId <= kPrimaryMask;
    for (const Language& language : kLanguages) {
        const auto nCompared =
            static_cast<std::uint16_t>(bPrimaryAlone ? language.nId & kPrimaryMask : language.nId);
        if (nCompared == nId) return &language;
    }
    return nullptr;
}

}  // namespace nomira::posix
