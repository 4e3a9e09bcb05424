#include "solid/face_cutter.h"

#include <algorithm>

#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

using CutFaceRef = std::unique_ptr<CutFace>;

constexpr int32_t ContentsVolume = ContentsSolid | ContentsOpen;  // a volume that solid blocks keep their faces in

int32_t WithoutMarks(int32_t contents) {
    return contents & ~(ContentsMarked | ContentsDetail);
}

CutFaceRef MakeCutFace(std::unique_ptr<CBlockFace> face) {
    if (face == nullptr) return nullptr;
    auto cut = std::make_unique<CutFace>();
    cut->planenum = face->planenum;
    cut->planeside = face->planeside;
    if (!face->points.empty()) cut->box.fill(face->points.front());
    for (const Vec3& point : face->points) {
        for (size_t axis = 0; axis < 3; ++axis) {
            cut->box[0][axis] = std::min(cut->box[0][axis], point[axis]);
            cut->box[1][axis] = std::max(cut->box[1][axis], point[axis]);
        }
    }
    cut->face = std::move(face);
    return cut;
}

struct CutPieces {
    CutFaceRef front, back;
};

CutPieces SplitAtPoints(CutFaceRef cut, const CPlane& plane) {
    const CBlockFace* whole = cut->face.get();
    const size_t pointCount = whole->points.size();
    FacePieces pieces = SplitFace(std::move(cut->face), plane);
    const bool isInFront = pieces.front.get() == whole;
    const bool isBehind = pieces.back.get() == whole;
    if ((isInFront && pieces.front->points.size() == pointCount) ||
        (isBehind && pieces.back->points.size() == pointCount)) {
        cut->isSettled = true;
        cut->face = std::move(isInFront ? pieces.front : pieces.back);
        return isInFront ? CutPieces{std::move(cut), nullptr} : CutPieces{nullptr, std::move(cut)};
    }
    return {MakeCutFace(std::move(pieces.front)), MakeCutFace(std::move(pieces.back))};
}

// Tells the side of most faces from their box. Distances of the box's corners are computed as those of vertices are,
// and rounding keeps order: no vertex is further in front or behind than a corner, to the last bit.
class BoxTest {
  public:
    explicit BoxTest(const CPlane& plane) : plane_(plane), eps_(Options().eps) {
        for (size_t axis = 0; axis < 3; ++axis) fore_[axis] = plane.normal[axis] >= 0 ? 1 : 0;
    }

    bool HasNothingBehind(const CutFace& cut) const {
        const Vec3 rearmost{cut.box[1 - fore_[0]][0], cut.box[1 - fore_[1]][1], cut.box[1 - fore_[2]][2]};
        return DistanceOf(rearmost) >= -eps_;
    }
    bool IsWhollyBehind(const CutFace& cut) const {
        const Vec3 foremost{cut.box[fore_[0]][0], cut.box[fore_[1]][1], cut.box[fore_[2]][2]};
        return DistanceOf(foremost) < -eps_;
    }

  private:
    float DistanceOf(const Vec3& point) const { return static_cast<float>(Dot(plane_.normal, point) - plane_.dist); }

    CPlane plane_;
    float eps_;
    std::array<size_t, 3> fore_{};  // by axis: which end of a box is further in front
};

// SplitFace, by the face's box where that decides.
CutPieces Split(CutFaceRef cut, const CPlane& plane, const BoxTest& test) {
    if (cut->isSettled) {
        if (test.HasNothingBehind(*cut)) return {std::move(cut), nullptr};
        if (test.IsWhollyBehind(*cut)) return {nullptr, std::move(cut)};
    }
    return SplitAtPoints(std::move(cut), plane);
}

}  // namespace

void FaceCutter::Start(const CBlock& block) {
    for (const CBlockFace& face : block.faces) {
        std::unique_ptr<CBlockFace> copy = face.Clone();
        copy->sourceBlock = block.blockNumber;
        copy->contents = {ContentsEmpty, block.contents};
        outside_.push_front(MakeCutFace(std::move(copy)));
    }
}

void FaceCutter::ClipBy(const CBlock& other, const CBlock& block, bool precedence) {
    inside_ = std::move(outside_);
    for (const CBlockFace& face : other.faces) ClipInside(face.planenum, face.planeside, precedence);
    const bool isSolidInVolume = IsSolidOrDetail(block.contents) && WithoutMarks(other.contents) == ContentsVolume;
    FreeInside(isSolidInVolume ? other.contents : ContentsSolid);
}

std::unique_ptr<CBlockFace> FaceCutter::TakeFace() {
    return outside_.empty() ? nullptr : std::move(outside_.pop_front()->face);
}

void FaceCutter::ClipInside(int32_t planenum, int32_t side, bool precedence) {
    const CPlane& plane = TablePlane(planenum);
    const BoxTest test(plane);
    IntrusiveList<CutFace> stillInside;
    while (!inside_.empty()) {
        CutFaceRef face = inside_.pop_front();
        CutFaceRef outer, inner;
        if (face->planenum != planenum) {
            CutPieces pieces = Split(std::move(face), plane, test);
            outer = std::move(side == 0 ? pieces.front : pieces.back);
            inner = std::move(side == 0 ? pieces.back : pieces.front);
        } else if (face->planeside == side && !precedence) {
            outer = std::move(face);
        } else {
            inner = std::move(face);
        }
        if (outer != nullptr) outside_.push_front(std::move(outer));
        if (inner != nullptr) stillInside.push_front(std::move(inner));
    }
    inside_ = std::move(stillInside);
}

void FaceCutter::FreeInside(int32_t contents) {
    if (IsSolidOrDetail(contents)) {
        inside_.clear();
        return;
    }
    while (!inside_.empty()) {
        CutFaceRef face = inside_.pop_front();
        face->face->contents[0] = contents;
        outside_.push_front(std::move(face));
    }
}

}  // namespace k2k
