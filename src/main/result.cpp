#include <cstring>

#include "main/dispatch.h"

extern "C" char* queryResValueGet(char** table, int nCols, int row, const char* name) {
    if (nCols <= 0 || !table || !name) return nullptr;
    for (int c = 0; c < nCols; ++c) {
        if (table[c] && std::strcmp(table[c], name) == 0)
            return table[static_cast<long>(nCols) * (row + 1) + c];
    }
    return nullptr;
}
