// What `info` tells of a level, gathered once for its text and its JSON form.
#pragma once

#include <string>
#include <vector>

#include "klvtool/entities.h"
#include "klvtool/faces.h"
#include "klvtool/lightmaps.h"
#include "klvtool/textures.h"
#include "klvtool/tree.h"

namespace klvtool {

struct TableCount {
    const char* name;
    size_t count;
};

struct Summary {
    explicit Summary(const levelcheck::LevelView& level);

    const levelcheck::LevelView& level;
    std::vector<TableCount> tables;
    std::vector<Texture> textures;
    std::vector<size_t> textureUses;  // faces that show each texture
    std::vector<Entity> entities;
    std::vector<PageUse> pages;
    VisibilityCount visibility;

    double MeanVisible() const;
    // The record that carries the settings of the level; null without one.
    const Entity* Sun() const;
};

const char* ChunkName(int number);

std::string SummaryText(const Summary& summary);
std::string SummaryJson(const Summary& summary);

// A field's value as a person reads it: numbers with blanks between, flags in hexadecimal.
std::string ValueText(const FieldValue& value);

class Json;
void WriteEntity(Json& json, const Entity& entity);

}  // namespace klvtool
