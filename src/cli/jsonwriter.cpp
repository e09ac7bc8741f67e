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

JsonWriter& JsonWriter::Int(int64_t v)
{
    BeforeValue();
    m_out += std::to_string(v);
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::UInt(uint64_t v)
{
    BeforeValue();
    m_out += std::to_string(v);
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Double(double v)
{
    if (!std::isfinite(v))
        return Null();
    BeforeValue();
    char buf[32];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    m_out.append(buf, res.ptr);
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Float(float v)
{
    if (!std::isfinite(v))
        return Null();
    BeforeValue();
    char buf[32];
    auto res = std::to_chars(buf, buf + sizeof buf, v);
    m_out.append(buf, res.ptr);
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Bool(bool v)
{
    BeforeValue();
    m_out += v ? "true" : "false";
    m_needComma = true;
    return *this;
}

JsonWriter& JsonWriter::Null()
{
    BeforeValue();
    m_out += "null";
    m_needComma = true;
    return *this;
}

} // namespace cli
