// Writes JSON text, one value after the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace klvtool {

class Json {
  public:
    Json& BeginObject() { return Open('{'); }
    Json& EndObject() { return Close('}'); }
    Json& BeginArray() { return Open('['); }
    Json& EndArray() { return Close(']'); }
    // In an object, before each value.
    Json& Key(std::string_view name);

    // UTF-8; control characters are escaped.
    Json& Text(std::string_view text);
    Json& Int(int64_t value);
    Json& Count(size_t value) { return Int(static_cast<int64_t>(value)); }
    // The shortest text that reads back as the same number; JSON has no word for one that is not finite, so that is 0.
    Json& Number(double value);
    Json& Number(float value);
    Json& Bool(bool value);
    // Numbers of any range, as an array.
    template <typename Range>
    Json& Numbers(const Range& values) {
        BeginArray();
        for (const auto value : values) Number(value);
        return EndArray();
    }

    std::string Take() { return std::move(out_); }

  private:
    Json& Open(char bracket);
    Json& Close(char bracket);
    void Separate();

    std::string out_;
    bool first_ = true;  // no comma before the next value
};

}  // namespace klvtool
