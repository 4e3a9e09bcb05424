#include "levelfile/mesh_chunk.h"

#include <cstring>

#include "levelfile/file_klv.h"

namespace k2k {

namespace {

struct MeshHeader {
    Vec3 mins{}, maxs{};
    int32_t contents = 0;
    uint32_t vertexCount = 0, triangleCount = 0, materialCount = 0;
};
static_assert(sizeof(MeshHeader) == 40);

// Takes rows off the front of a chunk.
class ChunkReader {
  public:
    explicit ChunkReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    bool AtEnd() const { return bytes_.empty(); }

    template <typename T>
    std::vector<T> Take(uint32_t count) {
        if (count > bytes_.size() / sizeof(T)) InvalidLevelFile();
        std::vector<T> rows(count);
        const size_t size = count * sizeof(T);
        if (size > 0) std::memcpy(rows.data(), bytes_.data(), size);
        bytes_ = bytes_.subspan(size);
        return rows;
    }

  private:
    std::span<const uint8_t> bytes_;
};

// What a row number of the file has become in the mesh's own table.
template <typename T>
T Renumber(const std::vector<int32_t>& numbers, T row) {
    if (row < 0 || static_cast<size_t>(row) >= numbers.size()) InvalidLevelFile();
    return static_cast<T>(numbers[static_cast<size_t>(row)]);
}

CMesh ReadMesh(ChunkReader& reader, size_t surfaceCount) {
    const MeshHeader header = reader.Take<MeshHeader>(1).front();
    CMesh mesh;
    mesh.mins = header.mins;
    mesh.maxs = header.maxs;
    mesh.contents = header.contents;
    std::vector<int32_t> vertexNumbers, materialNumbers;
    for (const MeshVertex& vertex : reader.Take<MeshVertex>(header.vertexCount)) {
        vertexNumbers.push_back(AddMeshVertex(mesh, vertex));
    }
    std::vector<MeshTriangle> triangles = reader.Take<MeshTriangle>(header.triangleCount);
    for (const MeshMaterial& material : reader.Take<MeshMaterial>(header.materialCount)) {
        materialNumbers.push_back(AddMeshMaterial(mesh, material));
    }
    for (MeshTriangle& triangle : triangles) {
        for (int16_t& vertex : triangle.vertices) vertex = Renumber(vertexNumbers, vertex);
        triangle.material = Renumber(materialNumbers, triangle.material);
        if (triangle.surface < 0 || static_cast<size_t>(triangle.surface) >= surfaceCount) InvalidLevelFile();
        AddMeshSurface(mesh, triangle.surface);
    }
    mesh.triangles = std::move(triangles);
    return mesh;
}

size_t MeshSize(const CMesh& mesh) {
    return sizeof(MeshHeader) + mesh.vertices.size() * sizeof(MeshVertex) +
           mesh.triangles.size() * sizeof(MeshTriangle) + mesh.materials.size() * sizeof(MeshMaterial);
}

// Stores rows one behind the other in a chunk that has room for all of them.
class ChunkWriter {
  public:
    explicit ChunkWriter(std::span<uint8_t> chunk) : free_(chunk) {}

    template <typename T>
    void Put(const std::vector<T>& rows) {
        const size_t size = rows.size() * sizeof(T);
        if (size > 0) std::memcpy(free_.data(), rows.data(), size);
        free_ = free_.subspan(size);
    }
    template <typename T>
    void Put(const T& row) {
        std::memcpy(free_.data(), &row, sizeof(T));
        free_ = free_.subspan(sizeof(T));
    }

  private:
    std::span<uint8_t> free_;
};

void PutMesh(ChunkWriter& writer, const CMesh& mesh) {
    writer.Put(MeshHeader{mesh.mins, mesh.maxs, mesh.contents, static_cast<uint32_t>(mesh.vertices.size()),
                          static_cast<uint32_t>(mesh.triangles.size()), static_cast<uint32_t>(mesh.materials.size())});
    writer.Put(mesh.vertices);
    writer.Put(mesh.triangles);
    writer.Put(mesh.materials);
}

}  // namespace

std::vector<CMesh> ReadMeshes(std::span<const uint8_t> chunk, size_t surfaceCount) {
    ChunkReader reader(chunk);
    // The count in front is for engines; the meshes end where the chunk does.
    reader.Take<uint32_t>(1);
    std::vector<CMesh> meshes;
    while (!reader.AtEnd()) meshes.push_back(ReadMesh(reader, surfaceCount));
    return meshes;
}

std::vector<uint8_t> WriteMeshes(std::vector<CMesh>& meshes) {
    size_t size = sizeof(uint32_t);
    for (CMesh& mesh : meshes) {
        PrepareMesh(mesh);
        size += MeshSize(mesh);
    }
    std::vector<uint8_t> chunk(size);
    ChunkWriter writer(chunk);
    writer.Put(static_cast<uint32_t>(meshes.size()));
    for (const CMesh& mesh : meshes) PutMesh(writer, mesh);
    return chunk;
}

}  // namespace k2k
