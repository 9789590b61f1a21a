// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "foundation/text/mstring.h"

// Languages and countries, by the names under which layout files know them and by their codes.
//
// Threads  any
// Errors   MException "Index out of range." for a value that is no entry

class MLocale {
public:
    static constexpr std::int32_t kLanguageCount = 139;
    static constexpr std::int32_t kCountryCount = 236;

    enum class Language : std::int32_t;
    enum class Country : std::int32_t;

    // The name of the enumerator.
    static MString GetName(Language language);
    static MString GetName(Country country);
    // Two letters: ISO 639-1 in lower case, ISO 3166-1 alpha-2 in upper case.
    static MString GetCode(Language language);
    static MString GetCode(Country country);
    // By name, compared by MString::CompareNoCase.
    static std::optional<Language> FindLanguage(const MString& name);
    static std::optional<Country> FindCountry(const MString& name);
};

// clang-format off
// Nynorsk stands last, out of the alphabetical order, on purpose.
enum class MLocale::Language : std::int32_t {
    Abkhazian, Afan, Afar, Afrikaans, Albanian, Amharic, Arabic, Armenian, Assamese, Aymara,
    Azerbaijani, Bashkir, Basque, Bengali, Bhutani, Bihari, Bislama, Breton, Bulgarian, Burmese,
    Byelorussian, Cambodian, Catalan, Chinese, Corsican, Croatian, Czech, Danish, Dutch, English,
    Esperanto, Estonian, Faroese, Fiji, Finnish, French, Frisian, Gaelic, Galician, Georgian,
    German, Greek, Greenlandic, Guarani, Gujarati, Hausa, Hebrew, Hindi, Hungarian, Icelandic,
    Indonesian, Interlingua, Interlingue, Inuktitut, Inupiak, Irish, Italian, Japanese, Javanese,
    Kannada, Kashmiri, Kazakh, Kinyarwanda, Kirghiz, Korean, Kurdish, Kurundi, Laothian, Latin,
    Latvian, Lingala, Lithuanian, Macedonian, Malagasy, Malay, Malayalam, Maltese, Maori, Marathi,
    Moldavian, Mongolian, Nauru, Nepali, Norwegian, Occitan, Oriya, Pashto, Persian, Polish,
    Portuguese, Punjabi, Quechua, RhaetoRomance, Romanian, Russian, Samoan, Sangho, Sanskrit,
    Serbian, SerboCroatian, Sesotho, Setswana, Shona, Sindhi, Singhalese, Siswati, Slovak,
    Slovenian, Somali, Spanish, Sundanese, Swahili, Swedish, Tagalog, Tajik, Tamil, Tatar, Telugu,
    Thai, Tibetan, Tigrinya, Tonga, Tsonga, Turkish, Turkmen, Uigur, Ukrainian, Urdu, Uzbek,
    Vietnamese, Volapuk, Welsh, Wolof, Xhosa, Yiddish, Yoruba, Zhuang, Zulu, Nynorsk
};

enum class MLocale::Country : std::int32_t {
    Afghanistan, Albania, Algeria, AmericanSamoa, Andorra, Angola, Anguilla, Antarctica,
    AntiguaAndBarbuda, Argentina, Armenia, Aruba, Australia, Austria, Azerbaijan, Bahamas, Bahrain,
    Bangladesh, Barbados, Belarus, Belgium, Belize, Benin, Bermuda, Bhutan, Bolivia,
    BosniaAndHerzegowina, Botswana, BouvetIsland, Brazil, BritishIndianOceanTerritory,
    BruneiDarussalam, Bulgaria, BurkinaFaso, Burundi, Cambodia, Cameroon, Canada, CapeVerde,
    CaymanIslands, CentralAfricanRepublic, Chad, Chile, China, ChristmasIsland, CocosIslands,
    Colombia, Comoros, DemocraticRepublicOfCongo, PeoplesRepublicOfCongo, CookIslands, CostaRica,
    IvoryCoast, Croatia, Cuba, Cyprus, CzechRepublic, Denmark, Djibouti, Dominica,
    DominicanRepublic, EastTimor, Ecuador, Egypt, ElSalvador, EquatorialGuinea, Eritrea, Estonia,
    Ethiopia, FalklandIslands, FaroeIslands, Finland, France, MetropolitanFrance, FrenchGuiana,
    FrenchPolynesia, FrenchSouthernTerritories, Gabon, Gambia, Georgia, Germany, Ghana, Gibraltar,
    Greece, Greenland, Grenada, Guadeloupe, Guam, Guatemala, Guinea, GuineaBissau, Guyana, Haiti,
    HeardAndMcDonaldIslands, Honduras, HongKong, Hungary, Iceland, India, Indonesia, Iran, Iraq,
    Ireland, Israel, Italy, Jamaica, Japan, Jordan, Kazakhstan, Kenya, Kiribati,
    DemocraticRepublicOfKorea, RepublicOfKorea, Kuwait, Kyrgyzstan, Latvia, Lebanon, Lesotho,
    Liberia, LibyanArabJamahiriya, Liechtenstein, Lithuania, Luxembourg, Macau, Macedonia,
    Madagascar, Malawi, Malaysia, Maldives, Mali, Malta, MarshallIslands, Martinique, Mauritania,
    Mauritius, Mayotte, Mexico, Micronesia, Moldova, Monaco, Mongolia, Montserrat, Morocco,
    Mozambique, Myanmar, Namibia, Nepal, Netherlands, NetherlandsAntilles, NewCaledonia, NewZealand,
    Nicaragua, Niger, Nigeria, Niue, NorfolkIsland, NorthernMarianaIslands, Norway, Oman, Pakistan,
    Palau, PalestinianTerritory, Panama, PapuaNewGuinea, Paraguay, Peru, Philippines, Pitcairn,
    Poland, Portugal, PuertoRico, Qatar, Reunion, Romania, RussianFederation, Rwanda,
    SaintKittsAndNevis, StLucia, StVincentAndTheGrenadines, Samoa, SanMarino, SaoTomeAndPrincipe,
    SaudiArabia, Senegal, Seychelles, SierraLeone, Singapore, Slovakia, Slovenia, SolomonIslands,
    Somalia, SouthAfrica, SouthGeorgiaAndTheSouthSandwichIslands, Spain, SriLanka, StHelena,
    StPierreAndMiquelon, Sudan, Suriname, SvalbardAndJanMayenIslands, Swaziland, Sweden,
    Switzerland, SyrianArabRepublic, Taiwan, Tajikistan, Tanzania, Thailand, Togo, Tokelau,
    TrinidadAndTobago, Tunisia, Turkey, Turkmenistan, TurksAndCaicosIslands, Tuvalu, Uganda,
    Ukraine, UnitedArabEmirates, UnitedKingdom, UnitedStates, UnitedStatesMinorOutlyingIslands,
    Uruguay, Uzbekistan, Vanuatu, VaticanCityState, Venezuela, VietNam, BritishVirginIslands,
    USVirginIslands, WallisAndFutunaIslands, WesternSahara, Yemen, Yugoslavia, Zambia, Zimbabwe
};
// clang-format on
