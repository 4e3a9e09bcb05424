#include "levelfile/entity_keys.h"

#include <gtest/gtest.h>

namespace k2k {
namespace {

TEST(EntityKeys, AddsAtTheEndOfTheList) {
    KeyList keys;
    AddKey(keys, "type", "light");
    AddKey(keys, "origin", "1 2 3");
    EXPECT_EQ(keys.front().name, "type");
    EXPECT_EQ(keys.back().value, "1 2 3");
}

TEST(EntityKeys, CutsNamesTo31Characters) {
    KeyList keys;
    EXPECT_EQ(AddKey(keys, std::string(32, 'n'), "").name, std::string(31, 'n'));
}

TEST(EntityKeys, CutsAValueOf1024CharactersTo1023) {
    KeyList keys;
    EXPECT_EQ(AddKey(keys, "name", std::string(1024, 'v')).value, std::string(1023, 'v'));
    SetKey(keys, "name", std::string(1024, 'w'));
    EXPECT_EQ(GetKey(keys, "name"), std::string(1023, 'w'));
}

TEST(EntityKeys, SetReplacesTheFirstKeyOfThatName) {
    KeyList keys;
    AddKey(keys, "origin", "a");
    AddKey(keys, "origin", "b");
    SetKey(keys, "origin", "c");
    EXPECT_EQ(keys.front().value, "c");
    EXPECT_EQ(keys.back().value, "b");
}

TEST(EntityKeys, SetPutsANewKeyAtTheHead) {
    KeyList keys;
    AddKey(keys, "type", "model");
    SetKey(keys, "model", "*1");
    EXPECT_EQ(keys.front().name, "model");
    EXPECT_EQ(keys.size(), 2U);
}

TEST(EntityKeys, AMissingKeyIsTheEmptyString) {
    const KeyList keys;
    EXPECT_EQ(GetKey(keys, "name"), "");
}

TEST(EntityKeys, VectorComponentsBehindTheFirstWordStayZero) {
    KeyList keys;
    AddKey(keys, "origin", " 1.5 x 3");
    EXPECT_EQ(GetKeyVector(keys, "origin"), (Vec3{1.5F, 0, 0}));
    EXPECT_EQ(GetKeyVector(keys, "mangle"), Vec3{});
}

TEST(EntityKeys, ParsedFloatsKeepWhatDoesNotParse) {
    std::array<float, 3> numbers{7, 8, 9};
    EXPECT_EQ(ParseFloats("1 2x", numbers), 3U);
    EXPECT_EQ(numbers, (std::array<float, 3>{1, 2, 9}));
}

TEST(EntityKeys, TypeNumbersArePositionsInTheTable) {
    EXPECT_EQ(TypeNumber("level"), 0);
    EXPECT_EQ(TypeNumber("spotlight"), 8);
    EXPECT_EQ(TypeNumber("Level"), -1);
    EXPECT_EQ(TypeNumber(""), -1);
}

}  // namespace
}  // namespace k2k
