#pragma once

#include <string>
#include <string_view>

namespace interchange
{

enum class TextEncoding
{
    utf8,        // UTF-8; a byte-order mark for UTF-16 is honoured too
    windows1252, // the 8-bit code page of older spreadsheet exports
};

// "utf-8", "windows-1252" (also "cp1252", "latin1"); throws std::invalid_argument naming
// the accepted ones.
TextEncoding ParseTextEncoding(const std::string& name);

// The text of a source file as UTF-8. A byte-order mark is dropped and UTF-16 with one
// is converted. Bytes that are not text of the encoding (ill-formed UTF-8, a NUL) raise
// CImportError naming the line and column.
std::string DecodeSourceText(std::string_view bytes, TextEncoding encoding = TextEncoding::utf8);

// "line 3, column 14" of the byte at `offset` of a UTF-8 text (columns count characters).
std::string LineAndColumn(std::string_view text, size_t offset);

} // namespace interchange
