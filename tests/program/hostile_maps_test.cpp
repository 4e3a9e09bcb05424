// Maps that no editor writes: cut anywhere, with counts, numbers and names beyond all measure. Each is read or refused.
#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "driver/build_options.h"
#include "fuzzing.h"
#include "levelcheck/check.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "program/compile.h"
#include "support/build_state.h"

namespace k2k::test {
namespace {

namespace fs = std::filesystem;
using levelcheck::LevelView;
using ::testing::AnyOf;
using ::testing::HasSubstr;

// Tokens that begin with a brace, as lines of their own, are the frame of entities and blocks.
bool Opens(std::string_view line) {
    return line == "{";
}
bool Closes(std::string_view line) {
    return line == "}";
}

struct MapParts {
    std::string head;                // a version line
    std::vector<std::string> items;  // an entity without its blocks, or a block, with its braces
};

// The parts of a map that a writer with one brace a line made.
MapParts PartsOf(const std::string& text) {
    MapParts parts;
    std::string entity, block;
    int depth = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (Opens(line)) ++depth;
        (depth == 0 ? parts.head : depth == 1 ? entity : block) += line + '\n';
        if (!Closes(line)) continue;
        parts.items.push_back(std::exchange(depth == 2 ? block : entity, ""));
        --depth;
    }
    return parts;
}

// Two items of one shape differ in their numbers and names alone.
std::string ShapeOf(std::string item) {
    for (char& c : item)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) c = 'x';
    std::string shape;
    for (const char c : item)
        if (c != 'x' || !shape.ends_with('x')) shape += c;
    return shape;
}

class HostileMaps : public SmallMapTest {
  protected:
    HostileMaps() { Start(); }
    ~HostileMaps() override { fuzz::ResetBuild(); }

    static void Start() {
        fuzz::ResetBuild();
        fuzz::TakeOptions();
    }

    // Reads a map; the message of its fatal error, or "".
    static std::string Reading(const std::string& text) {
        fs::remove("level.$$M");  // writing over a file waits for the disk
        WriteFile("level.$$M", text);
        Start();
        try {
            ReadMap(false);
        } catch (const FatalStop& stop) {
            return stop.what();
        }
        return "";
    }

    static void ExpectNoBlock(const std::string& text) {
        Reading(text);
        for (const CEntity& entity : Entities()) EXPECT_TRUE(entity.blocks.empty());
    }

    // The whole program ends by itself, well or with a message.
    static void ExpectAnEnd() {
        const ProcessResult run = RunK2k({"level", "-pal", "palette.raw", "-threads", "1"});
        EXPECT_THAT(run.status, AnyOf(0, 1)) << run.out;
        EXPECT_EQ(run.status == 1, run.out.find("CRITICAL ERROR") != std::string::npos) << run.out;
    }

    // A level of one block in dialect 7.1.
    static std::string WithBlock(const std::string& block) {
        return "version 711\n{\n0 textures.$$w\npalette.raw\n{\n" + block + "}\n}\n";
    }
    static std::string Box(const std::string& corner) {
        return WithBlock("vertices 4\nfaces 4\n" + corner +
                         "\n64 0 0\n0 64 0\n0 0 64\n{ 00000000 ndef }\n3 0 1 2 : WALL " + Axes + "\n3 0 3 1 : WALL " +
                         Axes + "\n3 0 2 3 : WALL " + Axes + "\n3 1 3 2 : WALL " + Axes + "\n");
    }

    static constexpr const char* Axes = "( 1 0 0 0 ) ( 0 1 0 0 )";
};

// What stands before an item does not change how it is read, so that each shape of item is cut once.
TEST_F(HostileMaps, EveryKindOfItemIsCutAtEachByte) {
    std::set<std::string> shapes;
    size_t cuts = 0;
    for (const auto& entry : fs::recursive_directory_iterator(ExampleFolder())) {
        if (entry.path().extension() != ".$$M") continue;
        const MapParts parts = PartsOf(ReadFile(entry.path()));
        ASSERT_FALSE(parts.items.empty()) << entry.path();
        for (const std::string& item : parts.items) {
            if (!shapes.insert(parts.head + ShapeOf(item)).second) continue;
            const bool entity = std::isdigit(static_cast<unsigned char>(item[2])) != 0;
            const std::string before = parts.head + (entity ? "" : "{\n0 textures.$$w\npalette.raw\n");
            const size_t step = 1 + item.size() / 4096;
            for (size_t size = 2; size < item.size() - 1; size += step, ++cuts)
                ASSERT_NE(Reading(before + item.substr(0, size)), "") << before << item.substr(0, size);
        }
    }
    EXPECT_GT(cuts, 1000U);
}

// K2K_CUT_STEP=1 in the environment cuts at each byte, which takes minutes.
TEST_F(HostileMaps, WholeExamplesAreCutAtManyBytes) {
    const char* given = std::getenv("K2K_CUT_STEP");
    const size_t step = given == nullptr ? 131 : std::stoul(given);
    size_t cuts = 0;
    for (const auto& entry : fs::recursive_directory_iterator(ExampleFolder())) {
        if (entry.path().extension() != ".$$M") continue;
        const std::string text = ReadFile(entry.path());
        for (size_t size = 0; size < text.size(); size += step, ++cuts) {
            const std::string part = text.substr(0, size);
            const std::string message = Reading(part);
            if (std::count(part.begin(), part.end(), '{') > std::count(part.begin(), part.end(), '}')) {
                EXPECT_NE(message, "") << entry.path() << " cut at " << size;
            }
        }
    }
    EXPECT_GT(cuts, 1000U);
}

TEST_F(HostileMaps, ACutExampleBuildsOrEndsWithAMessage) {
    for (const char* dialect : {"50", "51", "71"}) {
        TakeExample(dialect, "court");
        const std::string text = ReadFile("court.$$M");
        for (size_t part = 1; part < 4; ++part) {
            WriteFile("level.$$M", text.substr(0, text.size() * part / 4));
            ExpectAnEnd();
        }
        fs::remove("court.$$M");
    }
}

TEST_F(HostileMaps, CountsBeyondTheirTypeMakeNoBlock) {
    const std::string vertices = "\n0 0 0 1 0 0 0 1 0 0 0 1\n", face = " 0 1 2 : WALL ";
    for (const std::string count :
         {"2147483647", "2147483648", "4294967295", "4294967296", "-2147483648", "99999999999999999999"}) {
        SCOPED_TRACE(count);
        ExpectNoBlock(WithBlock("vertices " + count + "\nfaces 4" + vertices));
        ExpectNoBlock(WithBlock("vertices 4\nfaces " + count + vertices));
        ExpectNoBlock(WithBlock("vertices 4\nfaces 4" + vertices + "{ 0 ndef }\n" + count + face + Axes + "\n"));
        ExpectNoBlock(WithBlock("vertices 4\nfaces 4" + vertices + "{ 0 ndef }\n3 0 1 " + count + " : WALL " + Axes));
    }
    EXPECT_EQ(Reading(WithBlock("vertices 357913942\nfaces 4\n")), "Illegal vertex count, block 0\n");
    EXPECT_EQ(Reading(WithBlock("vertices 357913941\nfaces 4\n")), "Invalid vertex list, block 0 line 10\n");
}

TEST_F(HostileMaps, APathOfMorePointsThanItHas) {
    for (const std::string count : {"2147483648", "99999999999999999999", "-1"}) {
        WriteFile("level.$$M", OneRoom().Text() + "{\n6 walk\n0\n" + count + "\n1 2 3\n}\n");
        ExpectAnEnd();
    }
}

TEST_F(HostileMaps, AMillionGroupsInsideEachOther) {
    const std::string open = [] {
        std::string text;
        for (int i = 0; i < 1000000; ++i) text += "{ ";
        return text;
    }();
    EXPECT_EQ(Reading(WithBlock("vertices 3\nfaces 4\n0 0 0 1 0 0 0 1 0\n" + open)), " \nE715");
    EXPECT_EQ(Reading("{\n0 textures.$$w\npalette.raw\n{\n" + open), " \nE715");
    EXPECT_EQ(Reading(open), " \nE715");
}

TEST_F(HostileMaps, NamesWithoutAnEnd) {
    const std::string name(1000000, 'x');
    EXPECT_EQ(Reading("{\n0 " + name), " \nE712");
    EXPECT_EQ(Reading("{\n0 \"" + name), " \nE712");
    EXPECT_EQ(Reading(WithBlock("vertices " + name)), " \nE712");
    EXPECT_EQ(Reading("version " + name), " \nE712");
    EXPECT_EQ(Reading("//" + name), "");
}

TEST_F(HostileMaps, CoordinatesThatAreNoPlaces) {
    EXPECT_EQ(Reading(Box("nan 0 0")), "Invalid vertex list, block 0 line 8\n");
    for (const char* number : {"inf", "-inf", "1e30", "-1e30", "1e300", "1e39", "3.4e38", "56000.1"}) {
        EXPECT_EQ(Reading(Box(std::string(number) + " 0 0")),
                  "Block outside level boundaries !\nUse -bound XXX to increase size !\n")
            << number;
    }
}

TEST_F(HostileMaps, LightsAndPathsThatAreNoPlacesDoNotReachTheLevelsTables) {
    for (const std::string n : {"nan", "-inf", "1e30", "1e300"}) {
        SCOPED_TRACE(n);
        WriteFile("level.$$M", OneRoom().Light({64, 64, 64}, {200, 100, 50}, 300).Text() + "{\n2 " + n +
                                   " 9 9 0 0 0 9 9 9 99\n}\n{\n2 9 9 9 " + n + " 0 0 " + n + " 9 9 " + n +
                                   "\n}\n{\n6 walk\n0\n2\n" + n + " 2 3\n4 5 " + n + "\n}\n");
        for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"-litv2"}, {"-mesh"}}) {
            const LevelView level = CompileLevel("level", options).level;
            EXPECT_FALSE(level.surfaces.empty());
            const std::vector<levelcheck::Fault> faults = levelcheck::Check(level);
            EXPECT_TRUE(levelcheck::IsSound(faults)) << levelcheck::Describe(faults);
        }
    }
}

TEST_F(HostileMaps, OptionsThatAreNoNumbersEnd) {
    Write(OneRoom());
    for (const char* option : {"-zoomlevel", "-bound", "-eps", "-gamma", "-litres"}) {
        for (const char* number : {"nan", "0", "-1"}) {
            const ProcessResult run =
                RunK2k({"level", "-pal", "palette.raw", "-threads", "1", option, number, "-sizeshaded", "996"});
            EXPECT_THAT(run.status, AnyOf(0, 1)) << option << number << run.out;
        }
    }
}

TEST_F(HostileMaps, AsManyEntitiesAsTheTableHolds) {
    SmallMap map = OneRoom();
    std::string lights;
    for (int i = 0; i < 8189; ++i) lights += "{\n2 128 128 64 0 0 0 1 1 1 8\n}\n";
    WriteFile("level.$$M", map.Text() + lights);
    Start();
    ReadMap(false);
    EXPECT_EQ(Entities().size(), 8192U);
    EXPECT_EQ(Reading(map.Text() + lights + "{\n}\n"), " \nE604: Map size - too many entities");
    WriteFile("level.$$M", map.Text() + lights);
    const ProcessResult run = RunK2k({"level", "-pal", "palette.raw", "-preview"});
    EXPECT_EQ(run.status, 0) << run.out;
}

}  // namespace
}  // namespace k2k::test
