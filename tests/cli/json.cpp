#include "json.h"

#include <cstdlib>
#include <stdexcept>

namespace qvtest
{

class JsonParser
{
public:
    explicit JsonParser(const std::string& text) : m_text(text) {}

    Json Document()
    {
        Json v = Value();
        Space();
        if (m_pos != m_text.size())
            Fail("text after the value");
        return v;
    }

private:
    [[noreturn]] void Fail(const char* what) const
    {
        throw std::runtime_error(std::string("JSON: ") + what + " at offset " +
                                 std::to_string(m_pos));
    }
    void Space()
    {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\n' ||
                                         m_text[m_pos] == '\t' || m_text[m_pos] == '\r'))
            ++m_pos;
    }
    bool Take(char c)
    {
        Space();
        if (m_pos < m_text.size() && m_text[m_pos] == c)
        {
            ++m_pos;
            return true;
        }
        return false;
    }
    void Expect(char c)
    {
        if (!Take(c))
            Fail((std::string("expected '") + c + "'").c_str());
    }
    bool Word(const char* w)
    {
        const std::string s(w);
        if (m_text.compare(m_pos, s.size(), s) != 0)
            return false;
        m_pos += s.size();
        return true;
    }

    std::string String()
    {
        Expect('"');
        std::string out;
        while (m_pos < m_text.size() && m_text[m_pos] != '"')
        {
            char c = m_text[m_pos++];
            if (c != '\\')
            {
                out += c;
                continue;
            }
            if (m_pos >= m_text.size())
                Fail("unfinished escape");
            c = m_text[m_pos++];
            switch (c)
            {
            case 'n':
                out += '\n';
                break;
            case 't':
                out += '\t';
                break;
            case 'r':
                out += '\r';
                break;
            case 'b':
                out += '\b';
                break;
            case 'f':
                out += '\f';
                break;
            case 'u':
            {
                if (m_pos + 4 > m_text.size())
                    Fail("short \\u escape");
                unsigned code =
                    unsigned(std::strtoul(m_text.substr(m_pos, 4).c_str(), nullptr, 16));
                m_pos += 4;
                if (code >= 0xD800 && code < 0xDC00 && m_text.compare(m_pos, 2, "\\u") == 0)
                {
                    const unsigned low =
                        unsigned(std::strtoul(m_text.substr(m_pos + 2, 4).c_str(), nullptr, 16));
                    m_pos += 6;
                    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                }
                if (code < 0x80)
                    out += char(code);
                else if (code < 0x800)
                {
                    out += char(0xC0 | (code >> 6));
                    out += char(0x80 | (code & 0x3F));
                }
                else if (code < 0x10000)
                {
                    out += char(0xE0 | (code >> 12));
                    out += char(0x80 | ((code >> 6) & 0x3F));
                    out += char(0x80 | (code & 0x3F));
                }
                else
                {
                    out += char(0xF0 | (code >> 18));
                    out += char(0x80 | ((code >> 12) & 0x3F));
                    out += char(0x80 | ((code >> 6) & 0x3F));
                    out += char(0x80 | (code & 0x3F));
                }
                break;
            }
            default:
                out += c;
                break;
            }
        }
        if (m_pos >= m_text.size())
            Fail("unfinished string");
        ++m_pos;
        return out;
    }

    Json Value()
    {
        Space();
        if (m_pos >= m_text.size())
            Fail("missing value");
        Json v;
        const char c = m_text[m_pos];
        if (c == '{')
        {
            ++m_pos;
            v.m_type = Json::object;
            if (Take('}'))
                return v;
            do
            {
                Space();
                std::string key = String();
                Expect(':');
                v.m_members[key] = Value();
            } while (Take(','));
            Expect('}');
        }
        else if (c == '[')
        {
            ++m_pos;
            v.m_type = Json::array;
            if (Take(']'))
                return v;
            do
                v.m_items.push_back(Value());
            while (Take(','));
            Expect(']');
        }
        else if (c == '"')
        {
            v.m_type = Json::string;
            v.m_string = String();
        }
        else if (Word("true") || Word("false"))
        {
            v.m_type = Json::boolean;
            v.m_bool = m_text[m_pos - 1] == 'e' && m_text[m_pos - 2] == 'u';
        }
        else if (Word("null"))
            v.m_type = Json::null;
        else
        {
            char* end = nullptr;
            v.m_type = Json::number;
            v.m_number = std::strtod(m_text.c_str() + m_pos, &end);
            if (end == m_text.c_str() + m_pos)
                Fail("not a value");
            m_pos = size_t(end - m_text.c_str());
        }
        return v;
    }

    const std::string& m_text;
    size_t m_pos = 0;
};

Json Json::Parse(const std::string& text)
{
    return JsonParser(text).Document();
}

bool Json::Bool() const
{
    if (m_type != boolean)
        throw std::runtime_error("JSON: not a boolean");
    return m_bool;
}

double Json::Number() const
{
    if (m_type != number)
        throw std::runtime_error("JSON: not a number");
    return m_number;
}

const std::string& Json::Str() const
{
    if (m_type != string)
        throw std::runtime_error("JSON: not a string");
    return m_string;
}

size_t Json::Size() const
{
    return m_type == array ? m_items.size() : m_type == object ? m_members.size() : 0;
}

const Json& Json::operator[](size_t i) const
{
    if (m_type != array || i >= m_items.size())
        throw std::runtime_error("JSON: no element " + std::to_string(i));
    return m_items[i];
}

const Json& Json::operator[](const std::string& key) const
{
    auto it = m_members.find(key);
    if (m_type != object || it == m_members.end())
        throw std::runtime_error("JSON: no member \"" + key + "\"");
    return it->second;
}

bool Json::Has(const std::string& key) const
{
    return m_type == object && m_members.count(key) != 0;
}

} // namespace qvtest
