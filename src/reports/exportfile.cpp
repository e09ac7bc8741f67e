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

CellForm MakeCellForm(int format, char listSeparator)
{
    if (format == formatTab)
        return CellForm{"\t", ""};
    return CellForm{std::string(1, listSeparator), "\""};
}

} // namespace reports
