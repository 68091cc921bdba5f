// Owners for what SQLite hands out, so that every statement text and result
// table is released on every path.
#pragma once

#include <cstdlib>
#include <utility>

#include "platform/platform.h"

extern "C" char* queryResValueGet(char** table, int nCols, int row, const char* name);

namespace wlan {

// Text from sqlite3_mprintf; formats put values in quotes with %q.
class SqlText {
public:
    explicit SqlText(char* text) : text_(text) {}
    SqlText(SqlText&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    SqlText(const SqlText&) = delete;
    SqlText& operator=(const SqlText&) = delete;
    ~SqlText() { sqlite3_free(text_); }
    const char* get() const { return text_; }

private:
    char* text_;
};

// A ResultTable with its counts.
class Rows {
public:
    Rows() = default;
    Rows(Rows&& other) noexcept
        : table_(std::exchange(other.table_, nullptr)), cols_(other.cols_), rows_(other.rows_) {}
    Rows& operator=(Rows&& other) noexcept {
        if (this != &other) {
            if (table_) sqlite3_free_table(table_);
            table_ = std::exchange(other.table_, nullptr);
            cols_ = other.cols_;
            rows_ = other.rows_;
        }
        return *this;
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows() {
        if (table_) sqlite3_free_table(table_);
    }

    // Runs statement on handle, or on the database file when handle is null.
    static Rows query(sqlite3* handle, const char* dbFile, const char* statement) {
        Rows rows;
        if (statement)
            rows.table_ = sqlite3QueryResGet(handle, dbFile, statement, &rows.cols_, &rows.rows_);
        return rows;
    }

    bool failed() const { return table_ == nullptr; }
    // No columns or no rows: the row sought is missing.
    bool empty() const { return cols_ == 0 || rows_ == 0; }
    int cols() const { return cols_; }
    int rows() const { return rows_; }
    char** table() const { return table_; }
    const char* value(int row, const char* name) const {
        return table_ ? queryResValueGet(table_, cols_, row, name) : nullptr;
    }

private:
    char** table_ = nullptr;
    int cols_ = 0;
    int rows_ = 0;
};

// A number stored as text: leading decimal digits, 0 when there are none.
inline int dbNumber(const char* text) {
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

// sqlite3_mprintf into an owner.
template <typename... Args>
SqlText sqlFormat(const char* format, Args... args) {
    return SqlText(sqlite3_mprintf(format, args...));
}

}  // namespace wlan
