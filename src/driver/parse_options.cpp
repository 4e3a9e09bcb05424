// Parsing of the command string.
#include <algorithm>
#include <string>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/option_table.h"
#include "driver/token_scanner.h"

namespace k2k {

namespace {

// One walk over a command string.
class CommandParser {
  public:
    // The text's terminating zero byte is scanned too, so that the last token is not lost.
    explicit CommandParser(const std::string& text) { scanner_.Start(text.c_str(), text.size() + 1); }

    // False at an unknown option, where the walk stops.
    bool Parse() {
        while (scanner_.NextToken(true)) {
            if (const OptionRow* row = FindOption(scanner_.view())) {
                word_ = row->word;
                std::visit(*this, row->target);
            } else if (AtDash()) {
                return false;
            } else {
                ReadMapName();
            }
        }
        return true;
    }

    void operator()(IgnoredFlag) {}
    void operator()(Flag flag) { o_.*flag.member = true; }
    void operator()(SpaceFlag flag) { o_.*flag.member = flag.value; }
    void operator()(IntValue value) { o_.*value.member = std::clamp(Int(), value.least, value.most); }
    void operator()(SizeValue value) {
        const int32_t size = Int();
        if (size >= MinSurfaceSize) o_.*value.member = std::min(size, MaxSurfaceSize);
    }
    void operator()(ShortValue value) { o_.*value.member = static_cast<uint16_t>(Int()); }
    void operator()(FloatValue value) { o_.*value.member = std::clamp(Float(), value.least, value.most); }
    void operator()(FloatTriple triple) {
        for (float& component : o_.*triple.member) component = Float();
    }
    void operator()(IntTriple triple) {
        for (int32_t& component : o_.*triple.member) component = Int();
    }
    void operator()(FogColour fog) {
        for (int32_t& component : o_.fog[fog.index]) component = Int();
        o_.fogset[fog.index] = true;
    }
    void operator()(JoinedText text) { text.store(JoinUpToOption(std::string(Argument()), "")); }

  private:
    static const OptionRow* FindOption(std::string_view word) {
        for (const OptionRow& row : OptionTable())
            if (EqualNoCase(word, row.word)) return &row;
        return nullptr;
    }

    bool AtDash() const { return scanner_.view().starts_with('-'); }

    std::string_view Argument() {
        if (!scanner_.NextToken(true))
            FatalError("Missing command-line parameter for %s\n", std::string(word_).c_str());
        return scanner_.view();
    }
    int32_t Int() { return ToInt(Argument()); }
    float Float() { return ToFloat(Argument()); }

    // Adds the tokens up to the next option, which is read again.
    std::string JoinUpToOption(std::string text, std::string_view separator) {
        while (scanner_.NextToken(true)) {
            if (AtDash()) {
                scanner_.Unread();
                break;
            }
            text.append(separator).append(scanner_.view());
        }
        return text;
    }

    void ReadMapName() {
        BuildPaths& paths = Paths();
        paths.MapPath = JoinUpToOption(std::string(scanner_.view()), " ");
        AddExtension(paths.MapPath, ".$$M");
        paths.LevelPath = paths.MapPath;
        StripExtension(paths.LevelPath);
        paths.LevelPath += ".klv";
    }

    BuildOptions& o_ = Options();
    TokenScanner scanner_;
    std::string_view word_;
};

}  // namespace

bool ParseOptions(std::string_view text) {
    const std::string terminated(text);
    OptionsValid = CommandParser(terminated).Parse() && ValidateOptions();
    return OptionsValid;
}

}  // namespace k2k
