// dot11GlobalConfig: the device's country sets the driver's regulatory
// regions and country code, always through radio 1.
#include <iterator>

#include "cfgfile/cfgfile.h"
#include "driver/driver.h"
#include "main/dispatch.h"
#include "radio/radio.h"
#include "radio/radiotext.h"

// {ISO number, ISO code, name, 5 GHz allowed, 5 GHz region, 2.4 GHz allowed,
// 2.4 GHz region}; the region numbers are the RT2860 driver's channel plans.
// Row 1 is the default for a country text without digits.
extern "C" const CountryEntry allCountry[] = {
    {0, "DB", "Debug", 1, 7, 1, 5},
    {8, "AL", "ALBANIA", 0, 0, 1, 1},
    {12, "DZ", "ALGERIA", 0, 0, 1, 1},
    {32, "AR", "ARGENTINA", 1, 3, 1, 1},
    {51, "AM", "ARMENIA", 1, 2, 1, 1},
    {36, "AU", "AUSTRALIA", 1, 0, 1, 1},
    {40, "AT", "AUSTRIA", 1, 1, 1, 1},
    {31, "AZ", "AZERBAIJAN", 1, 2, 1, 1},
    {48, "BH", "BAHRAIN", 1, 0, 1, 1},
    {112, "BY", "BELARUS", 0, 0, 1, 1},
    {56, "BE", "BELGIUM", 1, 1, 1, 1},
    {84, "BZ", "BELIZE", 1, 4, 1, 1},
    {68, "BO", "BOLIVIA", 1, 4, 1, 1},
    {76, "BR", "BRAZIL", 1, 1, 1, 1},
    {96, "BN", "BRUNEI DARUSSALAM", 1, 4, 1, 1},
    {100, "BG", "BULGARIA", 1, 1, 1, 1},
    {124, "CA", "CANADA", 1, 0, 1, 0},
    {152, "CL", "CHILE", 1, 0, 1, 1},
    {156, "CN", "CHINA", 1, 4, 1, 1},
    {170, "CO", "COLOMBIA", 1, 0, 1, 0},
    {188, "CR", "COSTA RICA", 0, 0, 1, 1},
    {191, "HR", "CROATIA", 1, 2, 1, 1},
    {196, "CY", "CYPRUS", 1, 1, 1, 1},
    {203, "CZ", "CZECH REPUBLIC", 1, 2, 1, 1},
    {208, "DK", "DENMARK", 1, 1, 1, 1},
    {214, "DO", "DOMINICAN REPUBLIC", 1, 0, 1, 0},
    {218, "EC", "ECUADOR", 0, 0, 1, 1},
    {818, "EG", "EGYPT", 1, 2, 1, 1},
    {222, "SV", "EL SALVADOR", 0, 0, 1, 1},
    {233, "EE", "ESTONIA", 1, 1, 1, 1},
    {246, "FI", "FINLAND", 1, 1, 1, 1},
    {250, "FR", "FRANCE", 1, 2, 1, 1},
    {268, "GE", "GEORGIA", 1, 2, 1, 1},
    {276, "DE", "GERMANY", 1, 1, 1, 1},
    {300, "GR", "GREECE", 1, 1, 1, 1},
    {320, "GT", "GUATEMALA", 1, 0, 1, 0},
    {340, "HN", "HONDURAS", 0, 0, 1, 1},
    {344, "HK", "HONG KONG", 1, 0, 1, 1},
    {348, "HU", "HUNGARY", 1, 1, 1, 1},
    {352, "IS", "ICELAND", 1, 1, 1, 1},
    {356, "IN", "INDIA", 1, 0, 1, 1},
    {360, "ID", "INDONESIA", 1, 4, 1, 1},
    {364, "IR", "IRAN", 1, 4, 1, 1},
    {372, "IE", "IRELAND", 1, 1, 1, 1},
    {376, "IL", "ISRAEL", 0, 0, 1, 1},
    {380, "IT", "ITALY", 1, 1, 1, 1},
    {392, "JP", "JAPAN", 1, 9, 1, 1},
    {400, "JO", "JORDAN", 1, 0, 1, 1},
    {398, "KZ", "KAZAKHSTAN", 0, 0, 1, 1},
    {408, "KP", "KOREA DEMOCRATIC PEOPLE'S REPUBLIC OF", 1, 5, 1, 1},
    {410, "KR", "KOREA REPUBLIC OF", 1, 5, 1, 1},
    {414, "KW", "KUWAIT", 0, 0, 1, 1},
    {428, "LV", "LATVIA", 1, 1, 1, 1},
    {422, "LB", "LEBANON", 0, 0, 1, 1},
    {438, "LI", "LIECHTENSTEIN", 1, 1, 1, 1},
    {440, "LT", "LITHUANIA", 1, 1, 1, 1},
    {442, "LU", "LUXEMBOURG", 1, 1, 1, 1},
    {446, "MO", "MACAU", 1, 0, 1, 1},
    {807, "MK", "MACEDONIA", 0, 0, 1, 1},
    {458, "MY", "MALAYSIA", 1, 0, 1, 1},
    {484, "MX", "MEXICO", 1, 0, 1, 0},
    {492, "MC", "MONACO", 1, 2, 1, 1},
    {504, "MA", "MOROCCO", 0, 0, 1, 1},
    {528, "NL", "NETHERLANDS", 1, 1, 1, 1},
    {554, "NZ", "NEW ZEALAND", 1, 0, 1, 1},
    {578, "NO", "NORWAY", 1, 0, 1, 1},
    {512, "OM", "OMAN", 1, 0, 1, 1},
    {586, "PK", "PAKISTAN", 0, 0, 1, 1},
    {591, "PA", "PANAMA", 1, 0, 1, 0},
    {604, "PE", "PERU", 1, 4, 1, 1},
    {608, "PH", "PHILIPPINES", 1, 4, 1, 1},
    {616, "PL", "POLAND", 1, 1, 1, 1},
    {620, "PT", "PORTUGAL", 1, 1, 1, 1},
    {630, "PR", "PUERTO RICO", 1, 0, 1, 0},
    {634, "QA", "QATAR", 0, 0, 1, 1},
    {642, "RO", "ROMANIA", 0, 0, 1, 1},
    {643, "RU", "RUSSIA FEDERATION", 0, 0, 1, 1},
    {682, "SA", "SAUDI ARABIA", 0, 0, 1, 1},
    {702, "SG", "SINGAPORE", 1, 0, 1, 1},
    {703, "SK", "SLOVAKIA", 1, 1, 1, 1},
    {705, "SI", "SLOVENIA", 1, 1, 1, 1},
    {710, "ZA", "SOUTH AFRICA", 1, 1, 1, 1},
    {724, "ES", "SPAIN", 1, 1, 1, 1},
    {752, "SE", "SWEDEN", 1, 1, 1, 1},
    {756, "CH", "SWITZERLAND", 1, 1, 1, 1},
    {760, "SY", "SYRIAN ARAB REPUBLIC", 0, 0, 1, 1},
    {158, "TW", "TAIWAN", 1, 3, 1, 0},
    {764, "TH", "THAILAND", 0, 0, 1, 1},
    {780, "TT", "TRINIDAD AND TOBAGO", 1, 2, 1, 1},
    {788, "TN", "TUNISIA", 1, 2, 1, 1},
    {792, "TR", "TURKEY", 1, 2, 1, 1},
    {804, "UA", "UKRAINE", 0, 0, 1, 1},
    {784, "AE", "UNITED ARAB EMIRATES", 0, 0, 1, 1},
    {826, "GB", "UNITED KINGDOM", 1, 1, 1, 1},
    {840, "US", "UNITED STATES", 1, 0, 1, 0},
    {858, "UY", "URUGUAY", 1, 5, 1, 1},
    {860, "UZ", "UZBEKISTAN", 1, 1, 1, 0},
    {862, "VE", "VENEZUELA", 1, 5, 1, 1},
    {704, "VN", "VIET NAM", 0, 0, 1, 1},
    {887, "YE", "YEMEN", 0, 0, 1, 1},
    {716, "ZW", "ZIMBABWE", 0, 0, 1, 1},
    {999, "", "", 0, 0, 1, 1},
};
static_assert(std::size(allCountry) == wlan::radio::kCountryCount);

using namespace wlan::radio;

namespace {

const CountryEntry* findCountry(int number) {
    for (const CountryEntry& row : allCountry)
        if (row.isoNumber == static_cast<uint32_t>(number)) return &row;
    return nullptr;
}

}  // namespace

extern "C" int dot11GlobalConfigTblHandler(const char* dbFile, int opType, int64_t, char** table,
                                           int nCols, int, char**) {
    if (opType == OP_DELETE) return 0;
    if (opType != OP_INSERT && opType != OP_UPDATE) return -1;

    wlan::Rows ifRows = wlan::Rows::query(
        nullptr, dbFile, wlan::sqlFormat(kCountryIfQuery, kCountryRadio).get());
    if (ifRows.failed()) return -1;
    if (ifRows.rows() == 0) return 0;  // no VAP on the radio: nothing to program
    if (ifRows.cols() == 0) return -1;
    const char* ifname = ifRows.value(0, "interfaceName");
    const char* country = queryResValueGet(table, nCols, 0, "country");
    if (!ifname || !country) return -1;

    int number = wlan::dbNumber(country);
    const CountryEntry* entry = findCountry(number);
    if (!entry) {
        wlan::logMsg(kUnknownCountry, number);
        return -1;
    }
    if (entry->supportG == 1) {
        update_cfg_file(ifname, kCountryRegionKey, static_cast<int>(entry->regionG), nullptr);
        if (int rc = wlan::drvSet(ifname, kCountryRegion, static_cast<int>(entry->regionG)))
            return rc;
    }
    // The 5 GHz region and the code reach the running driver only.
    if (entry->supportA == 1) {
        if (int rc = wlan::drvSet(ifname, kCountryRegionABand, static_cast<int>(entry->regionA)))
            return rc;
    }
    return wlan::drvSet(ifname, kCountryCode, entry->isoCode);
}
