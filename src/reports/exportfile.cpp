#include "reports/exportfile.h"

#include <cstring>

namespace reports
{

namespace
{
constexpr size_t kSinkPiece = 1 << 20;
}

void CExportFile::WriteString(std::string_view text)
{
    while (!text.empty())
    {
        const void* found = std::memchr(text.data(), '\n', text.size());
        const size_t run = found ? static_cast<size_t>(static_cast<const char*>(found) - text.data()) : text.size();
        if (run > 0)
        {
            m_data.append(text.data(), run);
            m_last = text[run - 1];
        }
        if (!found)
            break;
        if (m_last != '\r')
            m_data += '\r';
        m_data += '\n';
        m_last = '\n';
        text.remove_prefix(run + 1);
    }
    if (m_sink && m_data.size() >= kSinkPiece)
        Flush();
}

bool CExportFile::Flush()
{
    if (!m_sink || m_failed)
        return !m_failed;
    if (!m_data.empty() && !m_sink(m_data))
        m_failed = true;
    m_data.clear();
    return !m_failed;
}

std::string CellForm::Quoted(std::string_view value) const
{
    std::string s;
    s.reserve(value.size() + 2);
    AppendQuoted(s, value);
    return s;
}

void CellForm::AppendQuoted(std::string& s, std::string_view value) const
{
    s += quote;
    for (char c : value)
    {
        if (quote.empty() && (c == '\t' || c == '\r' || c == '\n'))
            s += ' ';
        else
        {
            if (!quote.empty() && c == quote[0])
                s += c;
            s += c;
        }
    }
    s += quote;
}

std::string CellForm::Plain(std::string_view value) const
{
    if (quote.empty())
        return Quoted(value);
    for (char c : value)
        if (c == quote[0] || c == '\r' || c == '\n' || separator.find(c) != std::string::npos)
            return Quoted(value);
    return std::string(value);
}

std::string HtmlEscape(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text)
    {
        switch (c)
        {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

CellForm MakeCellForm(int format, char listSeparator)
{
    if (format == formatTab)
        return CellForm{"\t", ""};
    return CellForm{std::string(1, listSeparator), "\""};
}

} // namespace reports
