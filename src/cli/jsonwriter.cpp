#include "cli/jsonwriter.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace cli
{

void JsonWriter::BeforeValue()
{
    if (m_afterKey)
    {
        m_afterKey = false;
        return;
    }
    if (m_needComma)
        m_out += ',';
}

JsonWriter& JsonWriter::BeginObject()
{
    BeforeValue();
    m_out += '{';
    m_needComma = false;
    return *this;
}

JsonWriter& JsonWriter::EndObject()
{
    m_out += '}';
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::BeginArray()
{
    BeforeValue();
    m_out += '[';
    m_needComma = false;
    return *this;
}

JsonWriter& JsonWriter::EndArray()
{
    m_out += ']';
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Key(std::string_view key)
{
    if (m_needComma)
        m_out += ',';
    m_needComma = false;
    String(key);
    m_out += ':';
    m_afterKey = true;
    m_needComma = false;
    return *this;
}

JsonWriter& JsonWriter::String(std::string_view s)
{
    BeforeValue();
    m_out += '"';
    for (unsigned char c : s)
    {
        switch (c)
        {
        case '"':
            m_out += "\\\"";
            break;
        case '\\':
            m_out += "\\\\";
            break;
        case '\n':
            m_out += "\\n";
            break;
        case '\r':
            m_out += "\\r";
            break;
        case '\t':
            m_out += "\\t";
            break;
        default:
            if (c < 0x20)
            {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\u%04x", c);
                m_out += buf;
            }
            else
                m_out += static_cast<char>(c);
        }
    }
    m_out += '"';
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Literal(std::string_view text)
{
    BeforeValue();
    m_out += text;
    m_needComma = true;
    return *this;
}

template <class T> JsonWriter& JsonWriter::Floating(T v)
{
    if (!std::isfinite(v))
        return Null();
    char buf[32];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    return Literal(std::string_view(buf, size_t(res.ptr - buf)));
}

JsonWriter& JsonWriter::Int(int64_t v)
{
    return Literal(std::to_string(v));
}

JsonWriter& JsonWriter::UInt(uint64_t v)
{
    return Literal(std::to_string(v));
}

JsonWriter& JsonWriter::Double(double v)
{
    return Floating(v);
}

JsonWriter& JsonWriter::Float(float v)
{
    return Floating(v);
}

JsonWriter& JsonWriter::Bool(bool v)
{
    return Literal(v ? "true" : "false");
}

JsonWriter& JsonWriter::Null()
{
    return Literal("null");
}

} // namespace cli
