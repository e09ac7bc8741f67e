#include "render/pdfexport.h"

namespace render
{

// The stand-in of a build without Qt: PDF is drawn with Qt's painter.
bool PdfAvailable() { return false; }

bool ExportPdf(CReport&, CTimeKeeperDoc&, CTimeKeeperApp&, std::string&, int&, std::string& error)
{
    error = kNoPdfMessage;
    return false;
}

} // namespace render
