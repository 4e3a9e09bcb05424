// Vertices and edges by plain hash chains with insertion at the head, to hold the indexed tables against.
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "levelfile/geometry_data.h"
#include "solid/block_face.h"
#include "solid/vectors.h"
#include "surface/grid_hash.h"

namespace k2k::test {

class PlainEdges {
  public:
    explicit PlainEdges(float bound) : hash_({-bound, -bound, -bound}, {bound, bound, bound}, 8192) {
        vertexHeads_.fill(-1);
        edgeHeads_.fill(-1);
        edges.push_back({});
        faces_.push_back({});
        edgeNext_.push_back(-1);
    }

    int32_t WeldVertex(Vec3 point) {
        for (float& v : point) {
            const double nearest = std::floor(v + 0.5);
            if (std::fabs(v - nearest) < 0.001) v = static_cast<float>(nearest);
        }
        int32_t& head = vertexHeads_[hash_(point) % 8192];
        for (int32_t at = head; at >= 0; at = vertexNext_[static_cast<size_t>(at)]) {
            const Vec3d d = Sub(Widen(point), Widen(vertices[static_cast<size_t>(at)]));
            if (std::fabs(d[0]) < 0.1 && std::fabs(d[1]) < 0.1 && std::fabs(d[2]) < 0.1) return at;
        }
        vertices.push_back(point);
        vertexNext_.push_back(head);
        head = static_cast<int32_t>(vertices.size() - 1);
        return head;
    }

    int32_t EdgeNumber(const Vec3& p1, const Vec3& p2, const CBlockFace& face) {
        const auto a = static_cast<uint32_t>(WeldVertex(p1));
        const auto b = static_cast<uint32_t>(WeldVertex(p2));
        int32_t& head = edgeHeads_[(hash_(p1) + hash_(p2)) % 8192];
        for (int32_t e = head; e >= 0; e = edgeNext_[static_cast<size_t>(e)]) {
            const CEdge& edge = edges[static_cast<size_t>(e)];
            auto& faces = faces_[static_cast<size_t>(e)];
            if (edge.second != a || edge.first != b || faces[1] != nullptr) continue;
            if (faces[0]->contents[0] != face.contents[0]) continue;
            faces[1] = &face;
            return -e;
        }
        edges.push_back({a, b});
        faces_.push_back({&face, nullptr});
        edgeNext_.push_back(head);
        head = static_cast<int32_t>(edges.size() - 1);
        return head;
    }

    std::vector<Vec3> vertices;
    std::vector<CEdge> edges;

  private:
    GridHash hash_;
    std::array<int32_t, 8192> vertexHeads_, edgeHeads_;
    std::vector<int32_t> vertexNext_, edgeNext_;
    std::vector<std::array<const CBlockFace*, 2>> faces_;
};

}  // namespace k2k::test
