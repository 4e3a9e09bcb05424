#include "surface/split_long_face.h"

#include <algorithm>

#include "solid/vectors.h"
#include "surface/table_limits.h"

namespace k2k {

namespace {

using Ring = std::vector<Vec3>;

Vec3 UnitFromTo(const Vec3& from, const Vec3& to) {
    Vec3 dir = Sub(to, from);
    Normalize(dir);
    return dir;
}

bool IsBend(const Vec3& dir, const Vec3& test) {
    const double cosine = Dot(test, dir);
    return cosine < 0.9999 || cosine > 1.00001;
}

// The first vertex off the straight run that starts with the ring's first side.
size_t FirstCorner(const Ring& ring) {
    const Vec3 dir = UnitFromTo(ring[0], ring[1]);
    size_t k = 1;
    while (k + 1 < ring.size() && !IsBend(dir, UnitFromTo(ring[k], ring[k + 1]))) ++k;
    return k;
}

// The same from the other end, along the ring's last side.
size_t LastCorner(const Ring& ring) {
    const Vec3 dir = UnitFromTo(ring[0], ring.back());
    size_t k = ring.size() - 1;
    while (k > 0 && !IsBend(dir, UnitFromTo(ring[k], ring[k - 1]))) --k;
    return k;
}

// Turns the ring until its first corner is near enough to the start for a piece that reaches round it. A ring without a
// corner, as of points that are no numbers, would be turned forever.
size_t TurnToCorner(Ring& ring) {
    for (size_t turns = 0; turns <= ring.size(); ++turns) {
        const size_t corner = FirstCorner(ring);
        if (corner + 2 < MaxRepairedVertices) return corner;
        std::rotate(ring.begin(), ring.begin() + 1, ring.end());
    }
    FatalError("%s", JunctionPointLimit.message);
}

// As much as a piece can take, but not past the last corner where that can be had.
size_t PieceLength(const Ring& ring, size_t firstCorner) {
    const size_t lastCorner = LastCorner(ring);
    if (ring.size() - firstCorner <= MaxRepairedVertices) return firstCorner + 2;
    if (lastCorner + 2 < MaxRepairedVertices && ring.size() - lastCorner <= MaxRepairedVertices) return lastCorner + 2;
    return MaxRepairedVertices;
}

// Takes the start of the ring for the piece; both keep the two ends of the cut.
void CutOff(Ring& ring, size_t length, Ring& piece) {
    const auto end = ring.begin() + static_cast<std::ptrdiff_t>(length);
    piece.assign(ring.begin(), end);
    ring.erase(ring.begin() + 1, end - 1);
}

}  // namespace

void SplitLongFace(std::unique_ptr<CBlockFace> face, FaceList& list) {
    if (face->points.size() <= MaxRepairedVertices) {
        list.push_front(std::move(face));
        return;
    }
    CBlockFace* chain = nullptr;
    while (face->points.size() > MaxRepairedVertices) {
        const size_t firstCorner = TurnToCorner(face->points);
        if (face->leafCopy != nullptr) FatalError("E104");
        auto piece = face->CopyHeader();
        CutOff(face->points, PieceLength(face->points, firstCorner), piece->points);
        piece->leafCopy = chain;
        chain = piece.get();
        list.push_front(std::move(piece));
    }
    face->leafCopy = chain;
    list.push_front(std::move(face));
}

}  // namespace k2k
