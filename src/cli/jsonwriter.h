#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace cli
{

// A minimal streaming JSON writer: objects, arrays, strings, numbers, booleans, null.
// Commas are placed by the writer; the caller only opens, writes and closes.
class JsonWriter
{
public:
    std::string& Text() { return m_out; }

    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    // A key inside an object; the next value belongs to it.
    JsonWriter& Key(std::string_view key);

    JsonWriter& String(std::string_view s);
    JsonWriter& Int(int64_t v);
    JsonWriter& UInt(uint64_t v);
    JsonWriter& Double(double v);
    // Shortest text that reads back as the same single-precision value.
    JsonWriter& Float(float v);
    JsonWriter& Bool(bool v);
    JsonWriter& Null();

private:
    void BeforeValue();
    // A value written as given: a number, true, false or null.
    JsonWriter& Literal(std::string_view text);
    // Shortest text that reads back as `v`; null where `v` is not finite.
    template <class T> JsonWriter& Floating(T v);

    std::string m_out;
    bool m_needComma = false;
    bool m_afterKey = false;
};

} // namespace cli
