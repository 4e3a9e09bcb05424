// Compares tables of records, field by field.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace klvtool {

enum class FieldKind { F32, I32, U32, I16, U16, U8, Text };

struct FieldLayout {
    const char* name;
    FieldKind kind;
    size_t count;  // of numbers, or bytes of a text
};
using RecordLayout = std::span<const FieldLayout>;

size_t SizeOf(RecordLayout layout);

// How two tables differ; several tables of one kind can be added up.
struct TableDiff {
    size_t recordsA = 0, recordsB = 0;
    size_t differing = 0;  // records that both have, but not alike
    size_t firstRecord = 0;
    std::string firstField;
    double largest = 0;  // difference of two numbers, and where it is
    size_t largestRecord = 0;
    std::string largestField;

    bool IsEqual() const { return recordsA == recordsB && differing == 0; }
};

// Adds the records of two tables of one layout; bytes behind the last whole record do not count. Numbers that differ in
// their bytes alone (a negative zero, a NaN of another kind) make records that differ by nothing.
void CompareTables(RecordLayout layout, std::span<const uint8_t> a, std::span<const uint8_t> b, TableDiff& diff);

// "12 of 40 records differ, first 3 (dist), largest difference 0.5 (normal of 7)", and what one side alone has.
std::string Describe(const TableDiff& diff, const char* record);

}  // namespace klvtool
