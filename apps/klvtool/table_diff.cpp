#include "klvtool/table_diff.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace klvtool {
namespace {

size_t SizeOf(FieldKind kind) {
    switch (kind) {
        case FieldKind::F32:
        case FieldKind::I32:
        case FieldKind::U32:
            return 4;
        case FieldKind::I16:
        case FieldKind::U16:
            return 2;
        case FieldKind::U8:
        case FieldKind::Text:
            return 1;
    }
    return 1;
}

template <typename T>
double As(const uint8_t* at) {
    T value{};
    std::memcpy(&value, at, sizeof(T));
    return static_cast<double>(value);
}

double NumberAt(FieldKind kind, const uint8_t* at) {
    switch (kind) {
        case FieldKind::F32:
            return As<float>(at);
        case FieldKind::I32:
            return As<int32_t>(at);
        case FieldKind::U32:
            return As<uint32_t>(at);
        case FieldKind::I16:
            return As<int16_t>(at);
        case FieldKind::U16:
            return As<uint16_t>(at);
        case FieldKind::U8:
            return As<uint8_t>(at);
        case FieldKind::Text:
            return 0;
    }
    return 0;
}

// The largest difference of a field's numbers.
double Difference(const FieldLayout& field, const uint8_t* a, const uint8_t* b) {
    double largest = 0;
    for (size_t i = 0; i < field.count; i++) {
        const size_t at = i * SizeOf(field.kind);
        const double difference = std::abs(NumberAt(field.kind, a + at) - NumberAt(field.kind, b + at));
        if (difference > largest) largest = difference;
    }
    return largest;
}

void CompareRecord(RecordLayout layout, const uint8_t* a, const uint8_t* b, size_t record, TableDiff& diff) {
    const char* first = nullptr;
    for (const FieldLayout& field : layout) {
        const size_t bytes = field.count * SizeOf(field.kind);
        if (std::memcmp(a, b, bytes) != 0) {
            if (first == nullptr) first = field.name;
            const double difference = Difference(field, a, b);
            if (difference > diff.largest) {
                diff.largest = difference;
                diff.largestRecord = record;
                diff.largestField = field.name;
            }
        }
        a += bytes;
        b += bytes;
    }
    if (first == nullptr) return;
    if (diff.differing++ == 0) {
        diff.firstRecord = record;
        diff.firstField = first;
    }
}

std::string Shortest(double value) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

}  // namespace

size_t SizeOf(RecordLayout layout) {
    size_t size = 0;
    for (const FieldLayout& field : layout) size += field.count * SizeOf(field.kind);
    return size;
}

void CompareTables(RecordLayout layout, std::span<const uint8_t> a, std::span<const uint8_t> b, TableDiff& diff) {
    const size_t size = SizeOf(layout);
    if (size == 0) return;
    const size_t countA = a.size() / size, countB = b.size() / size;
    const size_t before = diff.recordsA;
    for (size_t i = 0; i < std::min(countA, countB); i++) {
        if (std::memcmp(a.data() + i * size, b.data() + i * size, size) == 0) continue;
        CompareRecord(layout, a.data() + i * size, b.data() + i * size, before + i, diff);
    }
    diff.recordsA += countA;
    diff.recordsB += countB;
}

std::string Describe(const TableDiff& diff, const char* record) {
    std::string text;
    if (diff.recordsA != diff.recordsB) {
        text = std::to_string(diff.recordsA) + " and " + std::to_string(diff.recordsB) + " " + record;
    }
    if (diff.differing == 0) return text;
    if (!text.empty()) text += "; ";
    text += std::to_string(diff.differing) + " of " + std::to_string(std::min(diff.recordsA, diff.recordsB)) + " " +
            record + " differ, first " + std::to_string(diff.firstRecord) + " (" + diff.firstField + ")";
    if (diff.largest > 0) {
        text += ", largest difference " + Shortest(diff.largest) + " (" + diff.largestField + " of " +
                std::to_string(diff.largestRecord) + ")";
    }
    return text;
}

}  // namespace klvtool
