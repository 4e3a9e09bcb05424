#include "mapread/duplicate_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>

namespace k2k::test {

namespace {

MapFace Face(Vec3 normal, float dist) {
    MapFace face;
    face.normal = normal;
    face.dist = dist;
    return face;
}

MapBlock BlockOf(std::vector<MapFace> faces) {
    MapBlock block;
    block.faces = std::move(faces);
    return block;
}

const Vec3 X{1, 0, 0}, Y{0, 1, 0};

TEST(SamePlanes, HoldInAnyOrder) {
    EXPECT_TRUE(HaveSamePlanes(BlockOf({Face(X, 1), Face(Y, 2)}), BlockOf({Face(Y, 2), Face(X, 1)})));
}

TEST(SamePlanes, NeedEachFaceAPartnerOfItsOwn) {
    EXPECT_FALSE(
        HaveSamePlanes(BlockOf({Face(X, 1), Face(X, 1), Face(Y, 2)}), BlockOf({Face(X, 1), Face(Y, 2), Face(Y, 2)})));
    EXPECT_FALSE(HaveSamePlanes(BlockOf({Face(X, 1)}), BlockOf({Face(X, 1), Face(X, 1)})));
    EXPECT_TRUE(HaveSamePlanes(BlockOf({Face(X, 1), Face(X, 1)}), BlockOf({Face(X, 1), Face(X, 1)})));
}

TEST(SamePlanes, AreExact) {
    const float next = std::nextafter(1.0F, 2.0F);
    EXPECT_FALSE(HaveSamePlanes(BlockOf({Face(X, 1)}), BlockOf({Face(X, next)})));
    EXPECT_FALSE(HaveSamePlanes(BlockOf({Face(X, 1)}), BlockOf({Face({next, 0, 0}, 1)})));
}

TEST(DuplicateIndex, TakesBothZerosForOne) {
    const MapBlock plus = BlockOf({Face({1, 0, 0}, 0)});
    const MapBlock minus = BlockOf({Face({1, -0.0F, -0.0F}, -0.0F)});
    DuplicateIndex index;
    index.Add(plus);
    EXPECT_EQ(index.Find(minus), &plus);
}

TEST(DuplicateIndex, NeverMatchesWhatIsNoNumber) {
    const MapBlock block = BlockOf({Face(X, std::numeric_limits<float>::quiet_NaN())});
    DuplicateIndex index;
    index.Add(block);
    EXPECT_EQ(index.Find(block), nullptr);
}

TEST(DuplicateIndex, IsEmptyAfterClear) {
    const MapBlock block = BlockOf({Face(X, 1)});
    DuplicateIndex index;
    index.Add(block);
    index.Clear();
    EXPECT_EQ(index.Find(block), nullptr);
}

// The rule as it is told: two faces match when distance and normal are equal, each face takes one free partner, and
// every face of both blocks must have one.
bool AreDuplicatesByMarks(const MapBlock& a, const MapBlock& b) {
    std::vector<bool> markedA(a.faces.size()), markedB(b.faces.size());
    for (size_t i = 0; i < a.faces.size(); ++i) {
        for (size_t j = 0; j < b.faces.size() && !markedA[i]; ++j) {
            const MapFace &f = a.faces[i], &g = b.faces[j];
            if (markedB[j] || f.dist != g.dist || f.normal != g.normal) continue;
            markedA[i] = markedB[j] = true;
        }
    }
    const auto all = [](const std::vector<bool>& marks) {
        return std::find(marks.begin(), marks.end(), false) == marks.end();
    };
    return all(markedA) && all(markedB);
}

TEST(DuplicateIndex, FindsTheFirstPartnerThatAWalkThroughAllBlocksFinds) {
    std::mt19937 random(3);
    const std::array<float, 4> numbers{0.0F, -0.0F, 1.0F, -1.0F};
    std::vector<std::unique_ptr<MapBlock>> blocks;
    DuplicateIndex index;
    int found = 0;
    for (int round = 0; round < 2000; ++round) {
        std::vector<MapFace> faces(1 + random() % 3);
        for (MapFace& face : faces) {
            face = Face({numbers[random() % 4], numbers[random() % 4], 0}, numbers[random() % 4]);
        }
        auto block = std::make_unique<MapBlock>(BlockOf(std::move(faces)));
        const auto plain = std::find_if(blocks.begin(), blocks.end(),
                                        [&](const auto& other) { return AreDuplicatesByMarks(*other, *block); });
        const MapBlock* expected = plain == blocks.end() ? nullptr : plain->get();
        ASSERT_EQ(index.Find(*block), expected) << round;
        if (expected != nullptr) ++found;
        index.Add(*block);
        blocks.push_back(std::move(block));
    }
    EXPECT_GT(found, 100);
}

}  // namespace

}  // namespace k2k::test
