// Constant keyword tables: {name, value} rows closed by a row whose name is
// null and whose value is what a word in no row gives.
#pragma once

#include <cstdint>
#include <cstring>

extern "C" {
struct KeywordEntry {
    const char* name;
    int32_t value;
};
}

namespace wlan {

// Whole, byte-wise, case-sensitive comparison; the first equal row wins.
inline int32_t keywordLookup(const KeywordEntry* table, const char* word) {
    const KeywordEntry* row = table;
    for (; row->name; ++row)
        if (word && std::strcmp(row->name, word) == 0) break;
    return row->value;
}

}  // namespace wlan
