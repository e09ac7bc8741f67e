#include "interchange/textencoding.h"

#include "interchange/importsource.h"
#include "model/archive.h"

#include <cctype>
#include <cstdint>
#include <stdexcept>

namespace interchange
{

namespace
{
void AppendUtf8(std::string& out, uint32_t c)
{
    if (c < 0x80)
        out += char(c);
    else if (c < 0x800)
    {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
    else
    {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

std::string FromUtf16(std::string_view bytes, bool bigEndian)
{
    if (bytes.size() % 2 != 0)
        throw CImportError("", "the UTF-16 text ends in the middle of a character");
    auto unit = [&](size_t i)
    {
        const auto a = uint8_t(bytes[i]), b = uint8_t(bytes[i + 1]);
        return bigEndian ? uint32_t(a << 8 | b) : uint32_t(b << 8 | a);
    };
    std::string out;
    out.reserve(bytes.size() / 2);
    for (size_t i = 0; i < bytes.size(); i += 2)
    {
        uint32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < bytes.size() && unit(i + 2) >= 0xDC00 &&
            unit(i + 2) < 0xE000)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
            i += 2;
        }
        else if (c >= 0xD800 && c < 0xE000)
            throw CImportError(LineAndColumn(out, out.size()),
                               "a broken UTF-16 character (a lone surrogate)");
        if (c == 0)
            throw CImportError(LineAndColumn(out, out.size()), "a NUL character is no text");
        AppendUtf8(out, c);
    }
    return out;
}

// The length of the well-formed UTF-8 sequence at `i`, or 0.
size_t SequenceLength(std::string_view s, size_t i)
{
    const auto b = uint8_t(s[i]);
    size_t n = 0;
    uint32_t c = 0;
    if (b < 0x80)
        return 1;
    if (b >= 0xC2 && b <= 0xDF)
        n = 2, c = b & 0x1F;
    else if (b >= 0xE0 && b <= 0xEF)
        n = 3, c = b & 0x0F;
    else if (b >= 0xF0 && b <= 0xF4)
        n = 4, c = b & 0x07;
    else
        return 0;
    if (i + n > s.size())
        return 0;
    for (size_t k = 1; k < n; ++k)
    {
        const auto f = uint8_t(s[i + k]);
        if ((f & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (f & 0x3F);
    }
    // Overlong forms, surrogates and values beyond U+10FFFF are not UTF-8.
    if ((n == 3 && c < 0x800) || (n == 4 && (c < 0x10000 || c > 0x10FFFF)) ||
        (c >= 0xD800 && c < 0xE000))
        return 0;
    return n;
}
} // namespace

TextEncoding ParseTextEncoding(const std::string& name)
{
    std::string n;
    for (char c : name)
        if (c != '-' && c != '_')
            n += char(std::tolower(static_cast<unsigned char>(c)));
    if (n == "utf8")
        return TextEncoding::utf8;
    if (n == "windows1252" || n == "cp1252" || n == "latin1" || n == "iso88591")
        return TextEncoding::windows1252;
    throw std::invalid_argument("the encoding must be utf-8 or windows-1252, not '" + name + "'");
}

std::string LineAndColumn(std::string_view text, size_t offset)
{
    size_t line = 1, column = 1;
    for (size_t i = 0; i < offset && i < text.size(); ++i)
    {
        if (text[i] == '\n')
            ++line, column = 1;
        else if ((uint8_t(text[i]) & 0xC0) != 0x80)
            ++column;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

std::string DecodeSourceText(std::string_view bytes, TextEncoding encoding)
{
    if (bytes.size() >= 2 && uint8_t(bytes[0]) == 0xFF && uint8_t(bytes[1]) == 0xFE)
        return FromUtf16(bytes.substr(2), false);
    if (bytes.size() >= 2 && uint8_t(bytes[0]) == 0xFE && uint8_t(bytes[1]) == 0xFF)
        return FromUtf16(bytes.substr(2), true);
    if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF")
        bytes.remove_prefix(3);
    if (const size_t nul = bytes.find('\0'); nul != std::string_view::npos)
        throw CImportError(LineAndColumn(bytes, nul),
                           "a NUL byte: this is no text file (or UTF-16 without a byte-order mark)");
    if (encoding == TextEncoding::windows1252)
        return Cp1252ToUtf8(bytes);
    for (size_t i = 0; i < bytes.size();)
    {
        const size_t n = SequenceLength(bytes, i);
        if (n == 0)
            throw CImportError(LineAndColumn(bytes, i),
                               "not UTF-8 text (the file may be in another encoding)");
        i += n;
    }
    return std::string(bytes);
}

} // namespace interchange
