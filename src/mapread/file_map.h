// The frame of all map readers: the file as tokens, entities, and the checks that every block goes through.
//
// A map source is text. Three dialects are told apart by the version line; each has a class of its own that adds to the
// one before it:
//
//   CFileMap     entities, the road of a block, checks and repairs
//   CFileMap50   faces by three points, plain texture mapping
//   CFileMap51   faces by vertex lists, mapping by vectors
//   CFileMap71   the same with materials
//
// While a block is read its faces and texinfos stand in the order of the file; TurnRound puts both into list order,
// where the last face comes first. Messages that count faces count in list order.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "driver/token_scanner.h"
#include "levelfile/file_klv.h"
#include "levelfile/level_records.h"
#include "mapread/duplicate_index.h"
#include "mapread/entity.h"
#include "mapread/entity_pair.h"
#include "solid/map_block.h"

namespace k2k {

class CFileMap : public CFileBase {
  public:
    using CFileBase::CFileBase;

    // Reads the whole file, empties the entity table and finds out the dialect. False when the flag is off or the name
    // is empty; a file that cannot be read is fatal.
    bool Open(bool mustExist) override;
    // Frees the text.
    bool Close() override;
    // Back to the state before any read.
    virtual void Reset();

    // Fills the entity table and, unless entitiesOnly, the blocks of each entity. A second pass follows when blocks of
    // the first one need precise planes.
    virtual void ReadAll(bool entitiesOnly);

    // Whether the file that was opened is of this class's dialect.
    virtual bool IsSupported() = 0;
    virtual int32_t GetVersion() { return version_; }

    // A block of the mesh kind was accepted.
    bool meshFound() const { return meshFound_; }

  protected:
    // Checks. Each reports by a warning what it finds.
    virtual bool IsDuplicateBlock(const MapBlock& block);
    // Whether the three points lie in the plane of one of the faces. These stand in the order of the file.
    virtual bool IsDuplicatePlane(std::span<const MapFace> faces, const MapFace& face, int32_t planeNumber);
    // False when the texture axes of a face are perpendicular to it.
    virtual bool CheckTextureAxes(const MapBlock& block, std::span<const Texinfo> texinfos);
    // Whether the planes of the block leave it open.
    virtual bool IsNotVolume(const MapBlock& block);

    // The second pass reads blocks with precise planes that were marked in the first. Marking says no when planes are
    // precise already.
    virtual bool IsMarkedForRereading(int32_t blockNumber);
    virtual bool MarkForRereading(int32_t blockNumber);

    virtual void MakeTextureAxes(Texinfo& texinfo, const MapFace& face, const std::array<int32_t, 2>& shift,
                                 const std::array<float, 2>& scale, int32_t rotation);
    // Lets go of all blocks; the entities that own them are gone already.
    virtual void FreeBlocks();

    // The dialect by the version line: 50, 51, 71 or some other number.
    virtual int32_t ReadVersion();
    // Null for a number without a reader.
    virtual std::unique_ptr<CEntityPair> NewEntityPair(int32_t type) = 0;
    // The current token is the type number.
    virtual void ReadEntityPair();
    // Sets the texture and the flags that its name stands for.
    virtual void ReadTextureName(Texinfo& texinfo);
    // Reads behind the block's opening brace; a block that passes all checks joins the current entity.
    virtual void ReadBlock() = 0;
    // Reads one entity. False at the end of the text.
    virtual bool ReadEntity(bool entitiesOnly);
    // Settles flags and materials, and gives every face its texinfo id.
    virtual void RegisterBlockTextures(MapBlock& block, std::span<Texinfo> texinfos);

    // Steps that the dialects share.

    bool HasPrecisePlanes(int32_t blockNumber);
    // A plane that is no plane is fatal.
    void RequirePlane(const MapFace& face) const;
    std::unique_ptr<MapBlock> NewBlock(bool fromVertices) const;
    void AcceptBlock(std::unique_ptr<MapBlock> block);
    // Clips every face to its block, for the bounds of both.
    void ClipPolygons(MapBlock& block) const;
    static void TurnRound(MapBlock& block, std::vector<Texinfo>& texinfos);

    // The next token, which must be on this line.
    std::string_view NextOnLine();
    // Hands the tokens of a group of braces to take; the opening brace is the current token. Braces of inner groups are
    // passed over.
    template <typename Take>
    void ReadGroup(Take take) {
        for (size_t depth = 1; depth > 0;) {
            RequireToken();
            if (token() == "{") {
                ++depth;
            } else if (token() == "}") {
                --depth;
            } else {
                take(token());
            }
        }
    }
    void RequireToken();
    std::string_view token() const { return scanner_.view(); }
    int line() const { return scanner_.line(); }
    size_t textSize() const { return text_.size(); }

    // Plain mapping: shifts, rotation, scales.
    void ReadPlainMapping(Texinfo& texinfo, const MapFace& face);
    // The ":" that begins the optional end of a face; any other token is put back, and defaults are set.
    bool ReadTailMark(Texinfo& texinfo);
    void ReadAmbientAndAlbedo(Texinfo& texinfo);

    TokenScanner scanner_;
    bool extended_ = false;  // mapping by vectors
    bool meshFound_ = false;
    CEntity* currentEntity_ = nullptr;

  private:
    void SkipBlock();
    void ReadEntities(bool entitiesOnly);
    bool KeepMarksWorthReading();
    void ReadMarkedAgain(bool entitiesOnly, size_t entitiesBefore);

    int32_t version_ = 0;
    std::string text_;
    std::vector<MapBlock*> blocks_;  // all accepted ones: number n stands at n - 1. Owned by their entities.
    DuplicateIndex duplicates_;
    std::vector<int32_t> reread_;  // marked block numbers, ascending
    bool rereading_ = false;
};

// A reader for the file's dialect, opened. Every failure is fatal.
std::unique_ptr<CFileMap> OpenMapFile(const std::string& path);

}  // namespace k2k
