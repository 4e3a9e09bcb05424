// Maps with bytes changed, lost and doubled: each is read or refused, and nothing else happens.
#include <random>

#include "map_text.h"

namespace k2k::test {

namespace {

class DamagedText : public MapTest {
  protected:
    void ReadAnyhow(const std::string& text) {
        SetMap(text);
        try {
            ReadMap(false);
        } catch (const FatalStop&) {
        }
        ForgetFatalError();
        TakeLoggedText();
    }

    void Damage(const std::string& text) {
        const std::string bytes = std::string("{}()[]:\"\n \t01-9.e/nKx*") + '\0';
        std::mt19937 random(5);
        for (int round = 0; round < 250; ++round) {
            std::string damaged = text;
            for (uint32_t change = 0; change < 1 + random() % 4; ++change) {
                const size_t at = random() % damaged.size();
                switch (random() % 4) {
                    case 0:
                        damaged[at] = bytes[random() % bytes.size()];
                        break;
                    case 1:
                        damaged.erase(at, random() % 20);
                        break;
                    case 2:
                        damaged.insert(at, damaged.substr(random() % damaged.size(), random() % 40));
                        break;
                    default:
                        damaged.insert(at, "99999999999999999999");
                        break;
                }
            }
            ReadAnyhow(damaged);
        }
        for (size_t size = 0; size < text.size(); size += 23) ReadAnyhow(text.substr(0, size));
    }
};

const std::string Entities51 =
    "{\n5 0 45\n}\n{\n6 path\n0\n1\n1 2 3\n}\n"
    "{\n7 1 2 3\n0 0 0\n1 1 1\nm.mdl\na\nb\n1 2 3 4 5 6 7 8 9 10 1 2 3 4 5 6 7 8 9 10\n0\n1\n2\n3\n4\na\nb\n}\n";

TEST_F(DamagedText, OfDialect50) {
    Damage(Level(Box50(0, 64, "WALL 0 0 45 1 1 : 1 2 3 4 5 6 7") + Box50(10.5, 70)) +
           "{\n2 1 2 3\n0 0 0\n1 2 3 4\n}\n{\n4 1 2 3\n0 0 0\na.wav\n1\n1 2 3 4\n}\n");
}

TEST_F(DamagedText, OfDialect51) {
    Damage("version 511\n" + Level(Box51(0, 64) + Box51(10.5, 70, "*A " + Vectors + " : 1 2 3 4", "110000 stone")) +
           Entities51);
}

TEST_F(DamagedText, OfDialect71) {
    Damage("version 711\n" + Level(Box51(0, 64, "A [ 0 0 1 0 1 1 0 1 ] " + Vectors + " : 1 2 3 ndef") + Box51(1, 70)) +
           Entities51);
}

TEST_F(DamagedText, WithRereading) {
    Options().hiprec = false;
    Damage(Level(Box50(0.5, 1.4) + Box50(0, 64)));
}

}  // namespace

}  // namespace k2k::test
