// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mlocale.h"

#include <iterator>
#include <string_view>

#include "foundation/text/exception.h"

namespace {

// clang-format off
constexpr const char* kLanguageNames[] = {
    "Abkhazian", "Afan", "Afar", "Afrikaans", "Albanian", "Amharic", "Arabic", "Armenian",
    "Assamese", "Aymara", "Azerbaijani", "Bashkir", "Basque", "Bengali", "Bhutani", "Bihari",
    "Bislama", "Breton", "Bulgarian", "Burmese", "Byelorussian", "Cambodian", "Catalan", "Chinese",
    "Corsican", "Croatian", "Czech", "Danish", "Dutch", "English", "Esperanto", "Estonian",
    "Faroese", "Fiji", "Finnish", "French", "Frisian", "Gaelic", "Galician", "Georgian", "German",
    "Greek", "Greenlandic", "Guarani", "Gujarati", "Hausa", "Hebrew", "Hindi", "Hungarian",
    "Icelandic", "Indonesian", "Interlingua", "Interlingue", "Inuktitut", "Inupiak", "Irish",
    "Italian", "Japanese", "Javanese", "Kannada", "Kashmiri", "Kazakh", "Kinyarwanda", "Kirghiz",
    "Korean", "Kurdish", "Kurundi", "Laothian", "Latin", "Latvian", "Lingala", "Lithuanian",
    "Macedonian", "Malagasy", "Malay", "Malayalam", "Maltese", "Maori", "Marathi", "Moldavian",
    "Mongolian", "Nauru", "Nepali", "Norwegian", "Occitan", "Oriya", "Pashto", "Persian", "Polish",
    "Portuguese", "Punjabi", "Quechua", "RhaetoRomance", "Romanian", "Russian", "Samoan", "Sangho",
    "Sanskrit", "Serbian", "SerboCroatian", "Sesotho", "Setswana", "Shona", "Sindhi", "Singhalese",
    "Siswati", "Slovak", "Slovenian", "Somali", "Spanish", "Sundanese", "Swahili", "Swedish",
    "Tagalog", "Tajik", "Tamil", "Tatar", "Telugu", "Thai", "Tibetan", "Tigrinya", "Tonga",
    "Tsonga", "Turkish", "Turkmen", "Uigur", "Ukrainian", "Urdu", "Uzbek", "Vietnamese", "Volapuk",
    "Welsh", "Wolof", "Xhosa", "Yiddish", "Yoruba", "Zhuang", "Zulu", "Nynorsk"
};

constexpr const char* kCountryNames[] = {
    "Afghanistan", "Albania", "Algeria", "AmericanSamoa", "Andorra", "Angola", "Anguilla",
    "Antarctica", "AntiguaAndBarbuda", "Argentina", "Armenia", "Aruba", "Australia", "Austria",
    "Azerbaijan", "Bahamas", "Bahrain", "Bangladesh", "Barbados", "Belarus", "Belgium", "Belize",
    "Benin", "Bermuda", "Bhutan", "Bolivia", "BosniaAndHerzegowina", "Botswana", "BouvetIsland",
    "Brazil", "BritishIndianOceanTerritory", "BruneiDarussalam", "Bulgaria", "BurkinaFaso",
    "Burundi", "Cambodia", "Cameroon", "Canada", "CapeVerde", "CaymanIslands",
    "CentralAfricanRepublic", "Chad", "Chile", "China", "ChristmasIsland", "CocosIslands",
    "Colombia", "Comoros", "DemocraticRepublicOfCongo", "PeoplesRepublicOfCongo", "CookIslands",
    "CostaRica", "IvoryCoast", "Croatia", "Cuba", "Cyprus", "CzechRepublic", "Denmark", "Djibouti",
    "Dominica", "DominicanRepublic", "EastTimor", "Ecuador", "Egypt", "ElSalvador",
    "EquatorialGuinea", "Eritrea", "Estonia", "Ethiopia", "FalklandIslands", "FaroeIslands",
    "Finland", "France", "MetropolitanFrance", "FrenchGuiana", "FrenchPolynesia",
    "FrenchSouthernTerritories", "Gabon", "Gambia", "Georgia", "Germany", "Ghana", "Gibraltar",
    "Greece", "Greenland", "Grenada", "Guadeloupe", "Guam", "Guatemala", "Guinea", "GuineaBissau",
    "Guyana", "Haiti", "HeardAndMcDonaldIslands", "Honduras", "HongKong", "Hungary", "Iceland",
    "India", "Indonesia", "Iran", "Iraq", "Ireland", "Israel", "Italy", "Jamaica", "Japan",
    "Jordan", "Kazakhstan", "Kenya", "Kiribati", "DemocraticRepublicOfKorea", "RepublicOfKorea",
    "Kuwait", "Kyrgyzstan", "Latvia", "Lebanon", "Lesotho", "Liberia", "LibyanArabJamahiriya",
    "Liechtenstein", "Lithuania", "Luxembourg", "Macau", "Macedonia", "Madagascar", "Malawi",
    "Malaysia", "Maldives", "Mali", "Malta", "MarshallIslands", "Martinique", "Mauritania",
    "Mauritius", "Mayotte", "Mexico", "Micronesia", "Moldova", "Monaco", "Mongolia", "Montserrat",
    "Morocco", "Mozambique", "Myanmar", "Namibia", "Nepal", "Netherlands", "NetherlandsAntilles",
    "NewCaledonia", "NewZealand", "Nicaragua", "Niger", "Nigeria", "Niue", "NorfolkIsland",
    "NorthernMarianaIslands", "Norway", "Oman", "Pakistan", "Palau", "PalestinianTerritory",
    "Panama", "PapuaNewGuinea", "Paraguay", "Peru", "Philippines", "Pitcairn", "Poland", "Portugal",
    "PuertoRico", "Qatar", "Reunion", "Romania", "RussianFederation", "Rwanda",
    "SaintKittsAndNevis", "StLucia", "StVincentAndTheGrenadines", "Samoa", "SanMarino",
    "SaoTomeAndPrincipe", "SaudiArabia", "Senegal", "Seychelles", "SierraLeone", "Singapore",
    "Slovakia", "Slovenia", "SolomonIslands", "Somalia", "SouthAfrica",
    "SouthGeorgiaAndTheSouthSandwichIslands", "Spain", "SriLanka", "StHelena",
    "StPierreAndMiquelon", "Sudan", "Suriname", "SvalbardAndJanMayenIslands", "Swaziland", "Sweden",
    "Switzerland", "SyrianArabRepublic", "Taiwan", "Tajikistan", "Tanzania", "Thailand", "Togo",
    "Tokelau", "TrinidadAndTobago", "Tunisia", "Turkey", "Turkmenistan", "TurksAndCaicosIslands",
    "Tuvalu", "Uganda", "Ukraine", "UnitedArabEmirates", "UnitedKingdom", "UnitedStates",
    "UnitedStatesMinorOutlyingIslands", "Uruguay", "Uzbekistan", "Vanuatu", "VaticanCityState",
    "Venezuela", "VietNam", "BritishVirginIslands", "USVirginIslands", "WallisAndFutunaIslands",
    "WesternSahara", "Yemen", "Yugoslavia", "Zambia", "Zimbabwe"
};
// clang-format on

// Two letters for each name, in the same order.
constexpr std::string_view kLanguageCodes =
    "abomaaafsqamarhyasayazbaeubndzbhbibrbgmybekmcazhcohrcsdanleneoet"
    "fofjfifrfygdglkadeelklgnguhahehihuisidiaieiuikgaitjajvknkskkrwky"
    "kokurnlolalvlnltmkmgmsmlmtmimrmomnnanenoocorpsfaplptpaqurmrorusm"
    "sgsasrshsttnsnsdsissskslsoessuswsvtltgtatttethbotitotstrtkugukur"
    "uzvivocywoxhyiyozazunn";

// Countries that are no more keep the code that they had: FX, AN, YU.
constexpr std::string_view kCountryCodes =
    "AFALDZASADAOAIAQAGARAMAWAUATAZBSBHBDBBBYBEBZBJBMBTBOBABWBVBRIOBN"
    "BGBFBIKHCMCACVKYCFTDCLCNCXCCCOKMCDCGCKCRCIHRCUCYCZDKDJDMDOTLECEG"
    "SVGQEREEETFKFOFIFRFXGFPFTFGAGMGEDEGHGIGRGLGDGPGUGTGNGWGYHTHMHNHK"
    "HUISINIDIRIQIEILITJMJPJOKZKEKIKPKRKWKGLVLBLSLRLYLILTLUMOMKMGMWMY"
    "MVMLMTMHMQMRMUYTMXFMMDMCMNMSMAMZMMNANPNLANNCNZNINENGNUNFMPNOOMPK"
    "PWPSPAPGPYPEPHPNPLPTPRQARERORURWKNLCVCWSSMSTSASNSCSLSGSKSISBSOZA"
    "GSESLKSHPMSDSRSJSZSECHSYTWTJTZTHTGTKTTTNTRTMTCTVUGUAAEGBUSUMUYUZ"
    "VUVAVEVNVGVIWFEHYEYUZMZW";

static_assert(std::size(kLanguageNames) == MLocale::kLanguageCount);
static_assert(std::size(kCountryNames) == MLocale::kCountryCount);
static_assert(kLanguageCodes.size() == 2 * MLocale::kLanguageCount);
static_assert(kCountryCodes.size() == 2 * MLocale::kCountryCount);

// The enumerator as an index into tables of count entries.
template <typename Enumeration>
std::size_t IndexOf(Enumeration value, std::int32_t count) {
    const auto index = static_cast<std::int32_t>(value);
    if (index < 0 || index >= count) throw MException("Index out of range.");
    return static_cast<std::size_t>(index);
}

MString CodeAt(std::string_view codes, std::size_t index) {
    return MString::FromUtf8(codes.substr(2 * index, 2));
}

template <typename Enumeration, std::size_t kCount>
std::optional<Enumeration> FindName(const char* const (&names)[kCount], const MString& name) {
    for (std::size_t i = 0; i < kCount; ++i) {
        if (name.CompareNoCase(names[i]) == 0) return static_cast<Enumeration>(i);
    }
    return std::nullopt;
}

}  // namespace

MString MLocale::GetName(Language language) {
    return kLanguageNames[IndexOf(language, kLanguageCount)];
}

MString MLocale::GetName(Country country) { return kCountryNames[IndexOf(country, kCountryCount)]; }

MString MLocale::GetCode(Language language) {
    return CodeAt(kLanguageCodes, IndexOf(language, kLanguageCount));
}

MString MLocale::GetCode(Country country) {
    return CodeAt(kCountryCodes, IndexOf(country, kCountryCount));
}

std::optional<MLocale::Language> MLocale::FindLanguage(const MString& name) {
    return FindName<Language>(kLanguageNames, name);
}

std::optional<MLocale::Country> MLocale::FindCountry(const MString& name) {
    return FindName<Country>(kCountryNames, name);
}
