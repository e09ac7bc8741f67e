#include "reports/exportfile.h"

namespace reports
{

void CExportFile::WriteString(std::string_view text)
{
    for (char c : text)
    {
        if (c == '\n' && (m_data.empty() || m_data.back() != '\r'))
            m_data += '\r';
        m_data += c;
    }
}

CellForm MakeCellForm(int format, char listSeparator)
{
    if (format == formatTab)
        return CellForm{"\t", ""};
    return CellForm{std::string(1, listSeparator), "\""};
}

} // namespace reports
