#include "platform/locale_table.h"

#include <iterator>

namespace kelpdex::platform {

namespace {

struct LocaleChoice {
  uint32_t lcid;
  const char* name;
  // The glibc locale holding the same conventions; a neighbour where glibc has no locale of its
  // own for the country (Jamaica, Belize, Monaco, Macau...).
  const char* posixName;
};

// Grouped by language name, then by sublanguage (ascending LCID) within a language, as the
// options dialog lists them.
constexpr LocaleChoice kChoices[] = {
    {0, "Generic (Fixed)", nullptr},
    {kLocaleSystemDefault, "System Default", nullptr},
    {kLocaleUserDefault, "User Default", nullptr},
    {0x0436, "Afrikaans", "af_ZA"},
    {0x041C, "Albanian", "sq_AL"},
    {0x0401, "Arabic (Saudi Arabia)", "ar_SA"},
    {0x0801, "Arabic (Iraq)", "ar_IQ"},
    {0x0C01, "Arabic (Egypt)", "ar_EG"},
    {0x1001, "Arabic (Libya)", "ar_LY"},
    {0x1401, "Arabic (Algeria)", "ar_DZ"},
    {0x1801, "Arabic (Morocco)", "ar_MA"},
    {0x1C01, "Arabic (Tunisia)", "ar_TN"},
    {0x2001, "Arabic (Oman)", "ar_OM"},
    {0x2401, "Arabic (Yemen)", "ar_YE"},
    {0x2801, "Arabic (Syria)", "ar_SY"},
    {0x2C01, "Arabic (Jordan)", "ar_JO"},
    {0x3001, "Arabic (Lebanon)", "ar_LB"},
    {0x3401, "Arabic (Kuwait)", "ar_KW"},
    {0x3801, "Arabic (U.A.E.)", "ar_AE"},
    {0x3C01, "Arabic (Bahrain)", "ar_BH"},
    {0x4001, "Arabic (Qatar)", "ar_QA"},
    {0x042B, "Armenian", "hy_AM"},
    {0x042C, "Azeri (Latin)", "az_AZ"},
    {0x082C, "Azeri (Cyrillic)", "az_AZ"},
    {0x042D, "Basque", "eu_ES"},
    {0x0423, "Belarusian", "be_BY"},
    {0x0402, "Bulgarian", "bg_BG"},
    {0x0403, "Catalan", "ca_ES"},
    {0x0404, "Chinese (Taiwan)", "zh_TW"},
    {0x0804, "Chinese (PRC)", "zh_CN"},
    {0x0C04, "Chinese (Hong Kong SAR)", "zh_HK"},
    {0x1004, "Chinese (Singapore)", "zh_SG"},
    {0x1404, "Chinese (Macau SAR)", "zh_HK"},
    {0x041A, "Croatian", "hr_HR"},
    {0x0405, "Czech", "cs_CZ"},
    {0x0406, "Danish", "da_DK"},
    {0x0413, "Dutch (Netherlands)", "nl_NL"},
    {0x0813, "Dutch (Belgium)", "nl_BE"},
    {0x0409, "English (United States)", "en_US"},
    {0x0809, "English (United Kingdom)", "en_GB"},
    {0x0C09, "English (Australia)", "en_AU"},
    {0x1009, "English (Canada)", "en_CA"},
    {0x1409, "English (New Zealand)", "en_NZ"},
    {0x1809, "English (Ireland)", "en_IE"},
    {0x1C09, "English (South Africa)", "en_ZA"},
    {0x2009, "English (Jamaica)", "en_AG"},
    {0x2409, "English (Caribbean)", "en_AG"},
    {0x2809, "English (Belize)", "en_AG"},
    {0x2C09, "English (Trinidad)", "en_AG"},
    {0x3009, "English (Zimbabwe)", "en_ZW"},
    {0x3409, "English (Philippines)", "en_PH"},
    {0x0425, "Estonian", "et_EE"},
    {0x0438, "Faeroese", "fo_FO"},
    {0x0429, "Farsi", "fa_IR"},
    {0x040B, "Finnish", "fi_FI"},
    {0x040C, "French (France)", "fr_FR"},
    {0x080C, "French (Belgium)", "fr_BE"},
    {0x0C0C, "French (Canada)", "fr_CA"},
    {0x100C, "French (Switzerland)", "fr_CH"},
    {0x140C, "French (Luxembourg)", "fr_LU"},
    {0x180C, "French (Monaco)", "fr_FR"},
    {0x0437, "Georgian", "ka_GE"},
    {0x0407, "German (Germany)", "de_DE"},
    {0x0807, "German (Switzerland)", "de_CH"},
    {0x0C07, "German (Austria)", "de_AT"},
    {0x1007, "German (Luxembourg)", "de_LU"},
    {0x1407, "German (Liechtenstein)", "de_LI"},
    {0x0408, "Greek", "el_GR"},
    {0x0447, "Gujarati", "gu_IN"},
    {0x040D, "Hebrew", "he_IL"},
    {0x0439, "Hindi", "hi_IN"},
    {0x040E, "Hungarian", "hu_HU"},
    {0x040F, "Icelandic", "is_IS"},
    {0x0421, "Indonesian", "id_ID"},
    {0x0410, "Italian (Italy)", "it_IT"},
    {0x0810, "Italian (Switzerland)", "it_CH"},
    {0x0411, "Japanese", "ja_JP"},
    {0x044B, "Kannada", "kn_IN"},
    {0x043F, "Kazakh", "kk_KZ"},
    {0x0457, "Konkani", "kok_IN"},
    {0x0412, "Korean", "ko_KR"},
    {0x0426, "Latvian", "lv_LV"},
    {0x0427, "Lithuanian", "lt_LT"},
    {0x042F, "Macedonian (FYROM)", "mk_MK"},
    {0x043E, "Malay (Malaysia)", "ms_MY"},
    {0x083E, "Malay (Brunei Darussalam)", "ms_MY"},
    {0x044E, "Marathi", "mr_IN"},
    {0x0414, "Norwegian (Bokmal)", "nb_NO"},
    {0x0814, "Norwegian (Nynorsk)", "nn_NO"},
    {0x0415, "Polish", "pl_PL"},
    {0x0416, "Portuguese (Brazil)", "pt_BR"},
    {0x0816, "Portuguese (Portugal)", "pt_PT"},
    {0x0446, "Punjabi", "pa_IN"},
    {0x0418, "Romanian", "ro_RO"},
    {0x0419, "Russian", "ru_RU"},
    {0x044F, "Sanskrit", "sa_IN"},
    {0x081A, "Serbian (Latin)", "sr_RS@latin"},
    {0x0C1A, "Serbian (Cyrillic)", "sr_RS"},
    {0x041B, "Slovak", "sk_SK"},
    {0x0424, "Slovenian", "sl_SI"},
    {0x040A, "Spanish (Traditional Sort)", "es_ES"},
    {0x080A, "Spanish (Mexico)", "es_MX"},
    {0x0C0A, "Spanish (International Sort)", "es_ES"},
    {0x100A, "Spanish (Guatemala)", "es_GT"},
    {0x140A, "Spanish (Costa Rica)", "es_CR"},
    {0x180A, "Spanish (Panama)", "es_PA"},
    {0x1C0A, "Spanish (Dominican Republic)", "es_DO"},
    {0x200A, "Spanish (Venezuela)", "es_VE"},
    {0x240A, "Spanish (Colombia)", "es_CO"},
    {0x280A, "Spanish (Peru)", "es_PE"},
    {0x2C0A, "Spanish (Argentina)", "es_AR"},
    {0x300A, "Spanish (Ecuador)", "es_EC"},
    {0x340A, "Spanish (Chile)", "es_CL"},
    {0x380A, "Spanish (Uruguay)", "es_UY"},
    {0x3C0A, "Spanish (Paraguay)", "es_PY"},
    {0x400A, "Spanish (Bolivia)", "es_BO"},
    {0x440A, "Spanish (El Salvador)", "es_SV"},
    {0x480A, "Spanish (Honduras)", "es_HN"},
    {0x4C0A, "Spanish (Nicaragua)", "es_NI"},
    {0x500A, "Spanish (Puerto Rico)", "es_PR"},
    {0x0441, "Swahili", "sw_KE"},
    {0x041D, "Swedish (Sweden)", "sv_SE"},
    {0x081D, "Swedish (Finland)", "sv_FI"},
    {0x0449, "Tamil", "ta_IN"},
    {0x0444, "Tatar", "tt_RU"},
    {0x044A, "Telugu", "te_IN"},
    {0x041E, "Thai", "th_TH"},
    {0x041F, "Turkish", "tr_TR"},
    {0x0422, "Ukrainian", "uk_UA"},
    {0x0420, "Urdu (Pakistan)", "ur_PK"},
    {0x0820, "Urdu (India)", "ur_IN"},
    {0x0443, "Uzbek (Latin)", "uz_UZ"},
    {0x0843, "Uzbek (Cyrillic)", "uz_UZ@cyrillic"},
    {0x042A, "Vietnamese", "vi_VN"},
};

static_assert(std::size(kChoices) == kLocaleChoiceCount);

}  // namespace

uint32_t LocaleIdOfChoice(int choice) {
  if (choice < 0 || choice >= kLocaleChoiceCount) return 0;
  return kChoices[choice].lcid;
}

const char* LocaleChoiceName(int choice) {
  if (choice < 0 || choice >= kLocaleChoiceCount) return nullptr;
  return kChoices[choice].name;
}

int FindLocaleChoice(uint32_t lcid) {
  for (int choice = 0; choice < kLocaleChoiceCount; ++choice) {
    if (kChoices[choice].lcid == lcid) return choice;
  }
  return -1;
}

const char* PosixLocaleName(uint32_t lcid) {
  int choice = FindLocaleChoice(lcid);
  return choice < 0 ? nullptr : kChoices[choice].posixName;
}

}  // namespace kelpdex::platform
